// Runs the examples of the native utility library.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Shell.h"

namespace {

namespace fs = std::filesystem;
using support::Outcome;
using support::run;
using testing::ElementsAre;
using testing::HasSubstr;

class NativeUtilsExamplesTest : public testing::Test {
 protected:
  static std::string program(const std::string& name) { return "'" PROGRAM_FOLDER "/" + name + "' "; }

  support::TemporaryFolder folder;
};

TEST_F(NativeUtilsExamplesTest, ReplacesAFolder) {
  fs::create_directory(folder / "installed");
  fs::create_directory(folder / "new");
  support::writeFile(folder / "new/version", "2");

  const Outcome outcome = run(program("replace-folder") + (folder / "new ") + (folder / "installed"));
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_THAT(support::namesIn(folder.path()), ElementsAre("installed"));
  EXPECT_EQ(support::contentsOf(folder / "installed/version"), "2");
}

TEST_F(NativeUtilsExamplesTest, RestoresTheFolderWithoutANewOne) {
  fs::create_directory(folder / "installed");
  support::writeFile(folder / "installed/version", "1");

  const Outcome outcome = run(program("replace-folder") + (folder / "missing ") + (folder / "installed"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(support::namesIn(folder.path()), ElementsAre("installed"));
  EXPECT_EQ(support::contentsOf(folder / "installed/version"), "1");
}

TEST_F(NativeUtilsExamplesTest, RunsAHelper) {
  const Outcome outcome = run("printf '#!/bin/sh\\nexit $1\\n' | base64 >" + (folder / "helper.txt") + " && " +
                              program("run-helper") + (folder / "helper.txt") + " 7");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "the helper returned 7\n");
}

TEST_F(NativeUtilsExamplesTest, DoesNotRunInvalidBase64) {
  support::writeFile(folder / "helper.txt", "Zm9");
  const Outcome outcome = run(program("run-helper") + (folder / "helper.txt"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "the helper could not be created\n");
}

TEST_F(NativeUtilsExamplesTest, ReportsTheHomeFolder) {
  const Outcome outcome = run(program("system-report"));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr(support::ownHome() + "\n"));
  EXPECT_THAT(outcome.output, HasSubstr("version 4.19 or later  yes\n"));
}

}  // namespace
