#include "logging/LogTargetBase.h"

#include <gtest/gtest.h>

#include "logging/LogTargetDefault.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

using tarn::LogTargetDefault;

class LogTargetBaseTest : public testing::Test {
 protected:
  void putFlag(const std::string& name) { support::writeFile(logs + "/" + name, ""); }

  tarn::Log_Level levelAfter(tarn::Log_Level asked) {
    target.setLogLevel(asked);
    return target.getLogLevel();
  }

  const std::string home = support::freshHome();
  const std::string logs = home + "/Library/Logs";
  const support::TemporaryFolder folder;
  LogTargetDefault target{"base-test"};
};

class KelvoLevelTest : public LogTargetBaseTest {
 protected:
  KelvoLevelTest() { target.setLogFile("Kelvo.log", ""); }
};

TEST_F(LogTargetBaseTest, HasDefaultsWhenItIsMade) {
  EXPECT_EQ(target.getIdentifier(), "base-test");
  EXPECT_EQ(target.getLogLevel(), tarn::INFO);
  EXPECT_EQ(target.getRefCount(), 0u);
  EXPECT_EQ(LogTargetDefault(nullptr).getIdentifier(), "");
}

TEST_F(LogTargetBaseTest, KeepsItsIdentifierForNull) {
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

TEST_F(LogTargetBaseTest, ObeysFlagFilesAlreadyWhenItIsMade) {
  putFlag("TARN.trace");
  EXPECT_EQ(LogTargetDefault("new").getLogLevel(), tarn::TRACE);
}

TEST_F(KelvoLevelTest, WithoutFlagFilesTheLevelIsTheOneAskedFor) {
  EXPECT_EQ(levelAfter(tarn::ERROR), tarn::ERROR);
  EXPECT_EQ(levelAfter(tarn::ALL), tarn::ALL);
  EXPECT_EQ(levelAfter(tarn::NONE), tarn::NONE);
}

TEST_F(KelvoLevelTest, ATraceFlagOfTheFileMeansTrace) {
  putFlag("Kelvo.trace");
  EXPECT_EQ(levelAfter(tarn::ERROR), tarn::TRACE);
  EXPECT_EQ(levelAfter(tarn::ALL), tarn::TRACE);
}

TEST_F(KelvoLevelTest, ADebugFlagOfTheFileOnlyLowersTheLevel) {
  putFlag("Kelvo.debug");
  EXPECT_EQ(levelAfter(tarn::ERROR), tarn::DEBUG);
  EXPECT_EQ(levelAfter(tarn::TRACE), tarn::TRACE);
}

TEST_F(KelvoLevelTest, TheSharedDebugFlagOnlyLowersTheLevel) {
  putFlag("qsu.debug");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::DEBUG);
  EXPECT_EQ(levelAfter(tarn::TRACE), tarn::TRACE);
}

TEST_F(KelvoLevelTest, TheSharedTraceFlagMeansTrace) {
  putFlag("qsu.trace");
  putFlag("qsu.debug");
  EXPECT_EQ(levelAfter(tarn::FATAL), tarn::TRACE);
}

TEST_F(KelvoLevelTest, ATraceFlagMeansTraceAlsoForATargetThatWantedAll) {
  putFlag("qsu.trace");
  EXPECT_EQ(levelAfter(tarn::ALL), tarn::TRACE);
}

TEST_F(KelvoLevelTest, TheFirstFlagFoundDecides) {
  putFlag("Kelvo.debug");
  putFlag("qsu.trace");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::DEBUG);
  putFlag("Kelvo.trace");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::TRACE);
}

TEST_F(KelvoLevelTest, AFolderIsNoFlag) {
  std::filesystem::create_directory(logs + "/Kelvo.trace");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::INFO);
}

TEST_F(KelvoLevelTest, AFlagIsLookedForInTheLogFolderAndNotBesideTheFile) {
  target.setLogFile("Kelvo.log", folder.path().c_str());
  support::writeFile(folder / "Kelvo.trace", "");
  EXPECT_EQ(levelAfter(tarn::INFO), tarn::INFO);
}

TEST_F(LogTargetBaseTest, TheLogFileStandsInTheLogFolderUnlessAnotherIsGiven) {
  EXPECT_TRUE(target.setLogFile(nullptr, nullptr));
  EXPECT_TRUE(support::contentsOf(logs + "/TARN.log").empty());
  EXPECT_TRUE(std::filesystem::exists(logs + "/TARN.log"));
}

TEST_F(LogTargetBaseTest, TheLogFileStandsInTheFolderThatIsGiven) {
  EXPECT_TRUE(target.setLogFile("a.log", folder.path().c_str()));
  EXPECT_TRUE(std::filesystem::exists(folder / "a.log"));
}

TEST_F(LogTargetBaseTest, AnEmptyNameKeepsTheOneThatTheTargetHas) {
  target.setLogFile("a.log", folder.path().c_str());
  std::filesystem::remove(folder / "a.log");
  EXPECT_TRUE(target.setLogFile("", folder.path().c_str()));
  EXPECT_TRUE(std::filesystem::exists(folder / "a.log"));
}

TEST_F(LogTargetBaseTest, ANameWithAFolderPartFailsAndKeepsTheTargetFromRegistration) {
  EXPECT_FALSE(target.setLogFile("logs/a.log", folder.path().c_str()));
  EXPECT_FALSE(target.onRegisterTarget());
}

TEST_F(LogTargetBaseTest, AGivenFolderIsNotCreated) {
  EXPECT_FALSE(target.setLogFile("a.log", (folder / "missing").c_str()));
  EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
}

TEST_F(LogTargetBaseTest, AFailureIsForgottenAfterASuccess) {
  target.setLogFile("logs/a.log", folder.path().c_str());
  EXPECT_TRUE(target.setLogFile("a.log", folder.path().c_str()));
  EXPECT_TRUE(target.onRegisterTarget());
  target.onUnregisterTarget();
}

TEST_F(LogTargetBaseTest, AFolderInTheFilesPlaceIsNoLogFile) {
  std::filesystem::create_directory(folder / "a.log");
  EXPECT_FALSE(target.setLogFile("a.log", folder.path().c_str()));
}

TEST_F(LogTargetBaseTest, APipeInTheFilesPlaceIsRefusedWithoutWaitingForItsReader) {
  ASSERT_EQ(::mkfifo((folder / "a.log").c_str(), 0600), 0);
  EXPECT_FALSE(target.setLogFile("a.log", folder.path().c_str()));
}

TEST_F(LogTargetBaseTest, WithoutALogFolderThereIsNoLogFile) {
  const support::PasswordDatabase nobody("");
  EXPECT_FALSE(target.setLogFile("a.log", ""));
  EXPECT_FALSE(std::filesystem::exists("a.log"));
}

TEST_F(LogTargetBaseTest, ARegisteredTargetMovesToItsNewFileAtOnce) {
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
