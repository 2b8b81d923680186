#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/Machine.h"
#include "platform/Users.h"
#include "platform/linux/Machine.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
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

TEST(SystemVersion, ASignIsNoPartOfANumber) {
  EXPECT_FALSE(platform::systemVersionOfRelease("-6.1"));
  EXPECT_EQ(platform::systemVersionOfRelease("6.-2")->minor, 0);
}

TEST(SystemVersion, ANumberThatIsTooLargeIsMissing) {
  EXPECT_FALSE(platform::systemVersionOfRelease("2147483648.1"));
  EXPECT_EQ(platform::systemVersionOfRelease("2147483647.2147483648.3")->major, 2147483647);
  EXPECT_EQ(platform::systemVersionOfRelease("2147483647.2147483648.3")->minor, 0);
  EXPECT_EQ(platform::systemVersionOfRelease("2147483647.2147483648.3")->bugFix, 0);
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

TEST(Bundle, KnowsItsExecutableEvenWhenItHasBeenRemoved) {
  const support::TemporaryFolder folder;
  const std::string copy = folder / "a program";
  std::filesystem::copy("/proc/self/exe", copy);
  const std::string question = "--gtest_filter=Bundle.DISABLED_RemovesItself";
  support::Child program([&] {
    ::execl(copy.c_str(), copy.c_str(), question.c_str(), "--gtest_also_run_disabled_tests", "--gtest_brief=1",
            nullptr);
    return 127;
  });
  EXPECT_EQ(program.wait(), 0);
}

// Run as a program of its own by the test before.
TEST(Bundle, DISABLED_RemovesItself) {
  const std::string path = platform::executablePath();
  std::filesystem::remove(path);
  EXPECT_EQ(platform::executablePath(), path);
  EXPECT_EQ(platform::executableArchitectures().size(), 1u);
}

TEST(Bundle, IsBuiltForWhatItsFileSays) {
  using platform::Architecture;
  const support::TemporaryFolder folder;
  const auto architecture = [&](unsigned char wordClass, unsigned char order, unsigned machine) {
    std::string header =
        "\x7f"
        "ELF";
    header += {static_cast<char>(wordClass), static_cast<char>(order)};
    header.resize(18);
    const auto low = static_cast<char>(machine & 0xff), high = static_cast<char>(machine >> 8);
    header += order == 1 ? std::string{low, high} : std::string{high, low};
    support::writeFile(folder / "program", header);
    return platform::architecturesOf(folder / "program");
  };
  EXPECT_EQ(architecture(2, 1, 62), std::vector{Architecture::kX86_64});
  EXPECT_EQ(architecture(1, 1, 62), std::vector{Architecture::kOther}) << "x32";
  EXPECT_EQ(architecture(1, 1, 3), std::vector{Architecture::kX86});
  EXPECT_EQ(architecture(1, 2, 20), std::vector{Architecture::kPpc});
  EXPECT_EQ(architecture(2, 2, 21), std::vector{Architecture::kPpc64});
  EXPECT_EQ(architecture(2, 1, 21), std::vector{Architecture::kPpc64});
  EXPECT_EQ(architecture(2, 1, 183), std::vector{Architecture::kOther});
}

TEST(Bundle, AFileThatIsNoProgramIsBuiltForNothing) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "script", "#!/bin/sh\nexit 0; exit 0; exit 0\n");
  support::writeFile(folder / "short",
                     "\x7f"
                     "ELF");
  for (const std::string& file : {folder / "script", folder / "short", folder / "none", folder.path()})
    EXPECT_TRUE(platform::architecturesOf(file).empty()) << file;
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
