// A fake default browser. Records the addresses that it is started with.
//
// It is also registered for mail addresses, telephone numbers and a few schemes that no page may open, so that a test
// sees any that are opened.

#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/endtoend/WatchedFolder.h"

namespace endtoend {

class FakeBrowser {
 public:
  // Creates its files in `folder`, which need not exist.
  explicit FakeBrowser(const std::filesystem::path& folder);

  // The environment in which this is the user's default browser.
  std::map<std::string, std::string> environment() const;

  // The addresses opened so far, in order. Each new one is an event of the default main context.
  std::vector<std::string> opened() const;

 private:
  std::filesystem::path log() const { return folder_ / "log/opened"; }

  std::filesystem::path folder_;
  WatchedFolder watched_;
};

}  // namespace endtoend
