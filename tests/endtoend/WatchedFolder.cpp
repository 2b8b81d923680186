#include "tests/endtoend/WatchedFolder.h"

#include <stdexcept>

namespace endtoend {

WatchedFolder::WatchedFolder(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  const platform::Owned<GFile> file(g_file_new_for_path(folder.c_str()));
  g_autoptr(GError) error = nullptr;
  monitor_.reset(g_file_monitor_directory(file.get(), G_FILE_MONITOR_NONE, nullptr, &error));
  if (!monitor_) throw std::runtime_error(error->message);
  // By default a change within 800 ms of another is reported late.
  g_file_monitor_set_rate_limit(monitor_.get(), 0);
}

}  // namespace endtoend
