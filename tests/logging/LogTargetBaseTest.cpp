#include "logging/LogTargetBase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "logging/LogTargetDefault.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

using tarn::LogTargetDefault;

class LogTargetBaseTest : public testing::Test {
 protected:
  void createFlag(const std::string& name) { support::writeFile(logs + "/" + name, ""); }

  tarn::Log_Level levelAfter(tarn::Log_Level requested) {
    target.setLogLevel(requested);
    return target.getLogLevel();
  }

  const std::string home = support::freshHome();
  const std::string logs = home + "/Library/Logs";
  const support::TemporaryFolder folder;
  LogTargetDefault target{"base-test"};
};

class FlagFileTest : public LogTargetBaseTest {
 protected:
  FlagFileTest() { target.setLogFile("Kelvo.log", ""); }
};

TEST_F(LogTargetBaseTest, NewTargetHasDefaults) {
  EXPECT_EQ(target.getIdentifier(), "base-test");
  EXPECT_EQ(target.getLogLevel(), tarn::INFO);
  EXPECT_EQ(target.getRefCount(), 0u);
  EXPECT_EQ(LogTargetDefault(nullptr).getIdentifier(), "");
}

TEST_F(LogTargetBaseTest, NullKeepsTheIdentifier) {
  EXPECT_FALSE(target.setIdentifier(nullptr));
  EXPECT_EQ(target.getIdentifier(), "base-test");
  EXPECT_TRUE(target.setIdentifier("other"));
  EXPECT_EQ(target.getIdentifier(), "other");
}

TEST_F(LogTargetBaseTest, CountsReferences) {
  target.incrementRefCount();
  target.incrementRefCount();
  target.decrementRefCount();
  EXPECT_EQ(target.getRefCount(), 1u);
}

TEST_F(LogTargetBaseTest, ConstructorAppliesFlagFiles) {
  createFlag("TARN.trace");
  EXPECT_EQ(LogTargetDefault("new").getLogLevel(), tarn::TRACE);
}

TEST_F(FlagFileTest, NoFlagFileKeepsTheRequestedLevel) {
  EXPECT_EQ(levelAfter(tarn::ERROR), tarn::ERROR);
  EXPECT_EQ(levelAfter(tarn::ALL), tarn::ALL);
  EXPECT_EQ(levelAfter(tarn::NONE), tarn::NONE);
}

TEST_F(FlagFileTest, FileTraceFlagMeansTrace) {
  createFlag("Kelvo.trace");
  EXPECT_EQ(levelAfter(tarn::ERROR), tarn::TRACE);
  EXPECT_EQ(levelAfter(tarn::ALL), tarn::TRACE);
}

TEST_F(FlagFileTest, FileDebugFlagOnlyLowersTheLevel) {
  createFlag("Kelvo.debug");
  EXPECT_EQ(levelAfter(tarn::ERROR), tarn::DEBUG);
  EXPECT_EQ(levelAfter(tarn::TRACE), tarn::TRACE);
}

TEST_F(FlagFileTest, SharedDebugFlagOnlyLowersTheLevel) {
  createFlag("qsu.debug");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::DEBUG);
  EXPECT_EQ(levelAfter(tarn::TRACE), tarn::TRACE);
}

TEST_F(FlagFileTest, SharedTraceFlagMeansTrace) {
  createFlag("qsu.trace");
  createFlag("qsu.debug");
  EXPECT_EQ(levelAfter(tarn::FATAL), tarn::TRACE);
}

TEST_F(FlagFileTest, TraceFlagOverridesAll) {
  createFlag("qsu.trace");
  EXPECT_EQ(levelAfter(tarn::ALL), tarn::TRACE);
}

TEST_F(FlagFileTest, FirstFlagFoundDecides) {
  createFlag("Kelvo.debug");
  createFlag("qsu.trace");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::DEBUG);
  createFlag("Kelvo.trace");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::TRACE);
}

TEST_F(FlagFileTest, FolderIsNoFlag) {
  std::filesystem::create_directory(logs + "/Kelvo.trace");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::INFO);
}

TEST_F(FlagFileTest, FlagBesideTheLogFileIsIgnored) {
  target.setLogFile("Kelvo.log", folder.path().c_str());
  support::writeFile(folder / "Kelvo.trace", "");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::INFO);
}

TEST_F(LogTargetBaseTest, DefaultFileIsInTheLogFolder) {
  EXPECT_TRUE(target.setLogFile(nullptr, nullptr));
  EXPECT_TRUE(support::contentsOf(logs + "/TARN.log").empty());
  EXPECT_TRUE(std::filesystem::exists(logs + "/TARN.log"));
}

TEST_F(LogTargetBaseTest, FileIsInTheGivenFolder) {
  EXPECT_TRUE(target.setLogFile("a.log", folder.path().c_str()));
  EXPECT_TRUE(std::filesystem::exists(folder / "a.log"));
}

TEST_F(LogTargetBaseTest, EmptyNameKeepsTheCurrentName) {
  target.setLogFile("a.log", folder.path().c_str());
  std::filesystem::remove(folder / "a.log");
  EXPECT_TRUE(target.setLogFile("", folder.path().c_str()));
  EXPECT_TRUE(std::filesystem::exists(folder / "a.log"));
}

TEST_F(LogTargetBaseTest, NameWithFolderPreventsRegistration) {
  EXPECT_FALSE(target.setLogFile("logs/a.log", folder.path().c_str()));
  EXPECT_FALSE(target.onRegisterTarget());
}

TEST_F(LogTargetBaseTest, GivenFolderIsNotCreated) {
  EXPECT_FALSE(target.setLogFile("a.log", (folder / "missing").c_str()));
  EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
}

TEST_F(LogTargetBaseTest, SuccessClearsAnEarlierFailure) {
  target.setLogFile("logs/a.log", folder.path().c_str());
  EXPECT_TRUE(target.setLogFile("a.log", folder.path().c_str()));
  EXPECT_TRUE(target.onRegisterTarget());
  target.onUnregisterTarget();
}

TEST_F(LogTargetBaseTest, FolderAtLogPathFails) {
  std::filesystem::create_directory(folder / "a.log");
  EXPECT_FALSE(target.setLogFile("a.log", folder.path().c_str()));
}

TEST_F(LogTargetBaseTest, PipeAtLogPathFailsWithoutBlocking) {
  ASSERT_EQ(::mkfifo((folder / "a.log").c_str(), 0600), 0);
  EXPECT_FALSE(target.setLogFile("a.log", folder.path().c_str()));
}

TEST_F(LogTargetBaseTest, MissingLogFolderFails) {
  const support::PasswordDatabase empty("");
  EXPECT_FALSE(target.setLogFile("a.log", ""));
  EXPECT_FALSE(std::filesystem::exists("a.log"));
}

TEST_F(LogTargetBaseTest, RegisteredTargetSwitchesToNewFile) {
  target.setLogFile("a.log", folder.path().c_str());
  ASSERT_TRUE(target.onRegisterTarget());
  target.WriteStream("one");
  EXPECT_TRUE(target.setLogFile("b.log", folder.path().c_str()));
  target.WriteStream("two");
  EXPECT_EQ(support::contentsOf(folder / "a.log"), "one\n");
  EXPECT_EQ(support::contentsOf(folder / "b.log"), "two\n");
  target.onUnregisterTarget();
}

}  // namespace
