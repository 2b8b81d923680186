#include "platform/Processes.h"

#include <filesystem>
#include <system_error>

namespace platform {

std::string resolveProgram(const Task& task) {
  if (task.folder.empty() || task.program.empty() || task.program.front() == '/') return task.program;
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::current_path(error);
  return error ? task.program : (folder / task.program).string();
}

}  // namespace platform
