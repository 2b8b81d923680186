#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

#include "platform/Bundle.h"
#include "platform/SystemVersion.h"
#include "platform/Threads.h"
#include "platform/UserFolders.h"
#include "tests/support/Child.h"
#include "tests/support/Home.h"

namespace {

std::uint64_t systemsThreadId() {
  return static_cast<std::uint64_t>(::syscall(SYS_gettid));
}

TEST(SystemVersion, IsReadFromTheNumbersThatTheReleaseBeginsWith) {
  const auto version = platform::systemVersionOfRelease("6.1.27-18-amd64");
  ASSERT_TRUE(version);
  EXPECT_EQ(version->major, 6);
  EXPECT_EQ(version->minor, 1);
  EXPECT_EQ(version->bugFix, 27);
}

TEST(SystemVersion, NumbersThatAReleaseDoesNotHaveAreZero) {
  EXPECT_EQ(platform::systemVersionOfRelease("6.18-rc2")->minor, 18);
  EXPECT_EQ(platform::systemVersionOfRelease("6.18-rc2")->bugFix, 0);
  EXPECT_EQ(platform::systemVersionOfRelease("7")->minor, 0);
  EXPECT_EQ(platform::systemVersionOfRelease("7.")->minor, 0);
}

TEST(SystemVersion, IsNothingWithoutANumber) {
  EXPECT_FALSE(platform::systemVersionOfRelease(""));
  EXPECT_FALSE(platform::systemVersionOfRelease("next"));
}

TEST(SystemVersion, IsKnownOfTheRunningSystem) {
  ASSERT_TRUE(platform::systemVersion());
  EXPECT_GT(platform::systemVersion()->major, 0);
}

TEST(Threads, HaveTheNumberThatTheSystemGaveThem) {
  EXPECT_EQ(platform::currentThreadId(), systemsThreadId());
  std::thread([] { EXPECT_EQ(platform::currentThreadId(), systemsThreadId()); }).join();
}

TEST(Threads, HaveANewNumberAfterAFork) {
  (void)platform::currentThreadId();
  EXPECT_EQ(support::inChild([] { return platform::currentThreadId() == systemsThreadId() ? 0 : 1; }), 0);
}

TEST(Bundle, IsTheFolderOfTheExecutableWhateverTheWorkingFolderIs) {
  const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const auto former = std::filesystem::current_path();
  std::filesystem::current_path("/");
  EXPECT_EQ(platform::bundlePath(), folder.string());
  std::filesystem::current_path(former);
}

TEST(HomeFolder, ComesFromThePasswordDatabaseAndNotFromTheEnvironment) {
  const std::string home = support::ownHome();
  const std::string former = std::getenv("HOME");
  ::setenv("HOME", "/nowhere", 1);
  EXPECT_EQ(platform::homeFolder(), home);
  ::setenv("HOME", former.c_str(), 1);
}

TEST(HomeFolder, IsEmptyForAUserWhomThePasswordDatabaseDoesNotKnow) {
  const support::PasswordDatabase nobody("");
  EXPECT_EQ(platform::homeFolder(), "");
}

TEST(HomeFolder, IsFoundInAnEntryLongerThanTheFirstBuffer) {
  const std::string home = "/" + std::string(5000, 'h');
  const std::string user = std::to_string(::geteuid());
  const support::PasswordDatabase longHome("tester:x:" + user + ":" + user + ":tester:" + home + ":/bin/sh\n");
  EXPECT_EQ(platform::homeFolder(), home);
}

TEST(Tilde, StandsForTheHomeFolderOfTheEffectiveUser) {
  const std::string home = support::ownHome();
  EXPECT_EQ(platform::expandingTilde("~"), home);
  EXPECT_EQ(platform::expandingTilde("~/"), home);
  EXPECT_EQ(platform::expandingTilde("~/new/deeper/"), home + "/new/deeper");
}

TEST(Tilde, WithALoginNameStandsForThatUsersHomeFolder) {
  const support::PasswordDatabase two("ann:x:4711:0::/home/ann:/bin/sh\nbob:x:4712:0::/home/bob/:/bin/sh\n");
  EXPECT_EQ(platform::expandingTilde("~ann"), "/home/ann");
  EXPECT_EQ(platform::expandingTilde("~bob/x"), "/home/bob/x");
}

TEST(Tilde, StaysWhereNoHomeFolderIsKnown) {
  const support::PasswordDatabase nobody("");
  for (const char* path : {"~", "~/x/", "~no-such-user", "~no-such-user/x/"})
    EXPECT_EQ(platform::expandingTilde(path), path);
}

TEST(Tilde, MeansNothingButAtTheBeginning) {
  for (const char* path : {"", "/", "/tmp/~", "a~", "/tmp//x/", "./~"})
    EXPECT_EQ(platform::expandingTilde(path), path);
}

}  // namespace
