#include "platform/Bundle.h"

#include <sys/stat.h>

#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/Path.h"
#include "platform/linux/ExecutableFile.h"

namespace platform {
namespace {

constexpr const char* kSelf = "/proc/self/exe";

bool wasRemoved() {
  struct stat executable {};
  return ::stat(kSelf, &executable) == 0 && executable.st_nlink == 0;
}

}  // namespace

std::string executablePath() {
  std::error_code failed;
  std::string path = std::filesystem::read_symlink(kSelf, failed).string();
  constexpr std::string_view mark = " (deleted)";
  const bool marked = path.size() > mark.size() && path.compare(path.size() - mark.size(), mark.size(), mark) == 0;
  if (marked && wasRemoved()) path.resize(path.size() - mark.size());
  return path;
}

std::string bundlePath() {
  return deletingLastPathComponent(executablePath());
}

std::vector<Architecture> executableArchitectures() {
  return architecturesOf(kSelf);
}

}  // namespace platform
