// Makes every change of a file in a folder an event of the default main context, so that waitUntil() can wait for it.

#pragma once

#include <gio/gio.h>

#include <filesystem>

#include "platform/linux/Glib.h"

namespace endtoend {

class WatchedFolder {
 public:
  // Creates the folder if it does not exist.
  explicit WatchedFolder(const std::filesystem::path& folder);

 private:
  platform::Owned<GFileMonitor> monitor_;
};

}  // namespace endtoend
