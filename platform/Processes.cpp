#include "platform/Processes.h"

#include <filesystem>
#include <system_error>

namespace platform {

std::string resolveProgram(const Task& task) {
  if (task.folder.empty() || task.program.empty() || task.program.front() == '/') return task.program;
  std::error_code unknown;
  const std::filesystem::path here = std::filesystem::current_path(unknown);
  return unknown ? task.program : (here / task.program).string();
}

}  // namespace platform
