// The person's browser, as far as the system knows: it opens nothing and writes down what it is asked to open.
//
// It also stands for the programs behind mail addresses, telephone numbers and a few schemes that no page may start, so
// that one which gets out is seen.

#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/endtoend/WatchedFolder.h"

namespace endtoend {

class FakeBrowser {
 public:
  // Lies in `folder`, which need not exist yet.
  explicit FakeBrowser(const std::filesystem::path& folder);

  // Makes the programs that are started with it take this for the person's browser.
  std::map<std::string, std::string> environment() const;

  // What it was asked to open, in order. Each further address is an event of the default main context.
  std::vector<std::string> opened() const;

 private:
  std::filesystem::path log() const { return folder_ / "log/opened"; }

  std::filesystem::path folder_;
  WatchedFolder watched_;
};

}  // namespace endtoend
