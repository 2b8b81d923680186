// Makes every change of a file in a folder an event of the default main context, so that waitUntil() can wait for what
// another process writes there.

#pragma once

#include <gio/gio.h>

#include <filesystem>

#include "tests/tools/support/Owned.h"

namespace endtoend {

class WatchedFolder {
 public:
  // Makes the folder when it does not exist yet.
  explicit WatchedFolder(const std::filesystem::path& folder);

 private:
  tools::Owned<GFileMonitor> monitor_;
};

}  // namespace endtoend
