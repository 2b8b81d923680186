// Installs a component in a temporary folder (DESTDIR) and lists its files.

#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/Shell.h"

namespace packaging_test {

class StagedTest : public testing::Test {
 protected:
  void install(const std::string& component, const std::string& prefix) {
    const support::Outcome outcome =
        support::run("DESTDIR='" + stage_.path() + "' " CMAKE_PROGRAM " --install " BUILD_FOLDER " --component " +
                     component + " --prefix '" + prefix + "'");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
  }

  std::string staged(const std::string& path) const { return stage_.path() + path; }

  // Returns the sorted paths of all files and links.
  std::vector<std::string> stagedFiles() const {
    namespace fs = std::filesystem;
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(stage_.path()))
      if (entry.is_symlink() || !entry.is_directory())
        files.push_back("/" + fs::relative(entry.path().parent_path(), stage_.path()).string() + "/" +
                        entry.path().filename().string());
    std::sort(files.begin(), files.end());
    return files;
  }

 private:
  support::TemporaryFolder stage_;
};

}  // namespace packaging_test
