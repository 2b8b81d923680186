#include "platform/Bundle.h"

#include <filesystem>

namespace platform {

std::string bundlePath() {
  std::error_code failed;
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", failed);
  return executable.parent_path().string();
}

}  // namespace platform
