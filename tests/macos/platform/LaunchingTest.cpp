#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "platform/Desktop.h"
#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using platform::launchInForeground;
using platform::LaunchResult;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string thisProcess = "AECreateDesc psn 0,2";
const std::string activation = "misc actv to psn 0,2 return -1 transaction 0";

class LaunchingTest : public macos_test::SystemTest {
 protected:
  void TearDown() override {
    EXPECT_TRUE(support::comesTrue([] { return !support::hasChildren(); }));
  }

  std::string program(const std::string& script) const {
    const std::string path = folder / "a tool";
    support::writeFile(path, "#!/bin/sh\n" + script + "\n");
    ::chmod(path.c_str(), 0755);
    return path;
  }

  const support::TemporaryFolder folder;
};

TEST_F(LaunchingTest, ANewInstanceIsToldToComeToTheFront) {
  const std::string path = program("printf '%s|' \"$@\" >'" + (folder / "seen") + "'; mv '" + (folder / "seen") +
                                   "' '" + (folder / "done") + "'");
  const LaunchResult launch = launchInForeground(path, {"a b", "", "\xC3\xA4\""});
  EXPECT_TRUE(launch.launched);
  EXPECT_FALSE(launch.failure);
  const std::string real = std::filesystem::canonical(path).string();
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre(thisProcess, "AECreateAppleEvent " + activation, "FSPathMakeRef " + path,
                          "LSOpenApplication version 0 flags 589825 file " + real + " <a b> <> <\xC3\xA4\"> event " +
                              activation,
                          "AEDisposeDesc aevt", "AEDisposeDesc psn "));
  EXPECT_TRUE(support::comesTrue([&] { return support::contentsOf(folder / "done") == "a b||\xC3\xA4\"|"; }));
}

TEST_F(LaunchingTest, WithoutADescriptionOfThisProcessNothingElseIsTried) {
  doubles::failCall("AECreateDesc", -108);
  const LaunchResult launch = launchInForeground("/no/such", {});
  EXPECT_FALSE(launch.launched);
  EXPECT_FALSE(launch.failure);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre(thisProcess));
}

TEST_F(LaunchingTest, WithoutAnEventTheFileIsNotReferredTo) {
  doubles::failCall("AECreateAppleEvent", -108);
  const LaunchResult launch = launchInForeground("/no/such", {});
  EXPECT_FALSE(launch.launched);
  EXPECT_FALSE(launch.failure);
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre(thisProcess, "AECreateAppleEvent " + activation, "AEDisposeDesc psn "));
}

TEST_F(LaunchingTest, AFileThatCannotBeReferredToIsToldWithTheNameAndTheMeaningOfTheError) {
  const LaunchResult launch = launchInForeground("/no/such", {});
  EXPECT_FALSE(launch.launched);
  ASSERT_TRUE(launch.failure);
  EXPECT_EQ(launch.failure->error, "fnfErr");
  EXPECT_EQ(launch.failure->comment, "File not found");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre(thisProcess, "AECreateAppleEvent " + activation,
                                                 "FSPathMakeRef /no/such", "AEDisposeDesc aevt", "AEDisposeDesc psn "));
}

TEST_F(LaunchingTest, AnErrorWithoutNameAndMeaningIsStillAFailure) {
  doubles::failCall("GetMacOSStatusErrorString", 1);
  doubles::failCall("GetMacOSStatusCommentString", 1);
  const LaunchResult launch = launchInForeground("/no/such", {});
  ASSERT_TRUE(launch.failure);
  EXPECT_EQ(launch.failure->error, "");
  EXPECT_EQ(launch.failure->comment, "");
}

TEST_F(LaunchingTest, WhatTheLauncherRefusesIsNotLaunchedAndNoFailureToRefer) {
  doubles::failCall("LSOpenApplication", -10810);
  const LaunchResult launch = launchInForeground("/bin/true", {});
  EXPECT_FALSE(launch.launched);
  EXPECT_FALSE(launch.failure);
  EXPECT_THAT(doubles::takenCalls(), testing::Contains("AEDisposeDesc aevt"));
}

TEST_F(LaunchingTest, AnArgumentThatIsNoTextIsNotLaunchedWith) {
  const LaunchResult launch = launchInForeground("/bin/true", {"\xFF"});
  EXPECT_FALSE(launch.launched);
  EXPECT_THAT(doubles::takenCalls(), Not(Contains(HasSubstr("LSOpenApplication"))));
}

}  // namespace
