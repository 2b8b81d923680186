#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/Machine.h"
#include "platform/linux/Machine.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

std::uint64_t kernelThreadId() {
  return static_cast<std::uint64_t>(::syscall(SYS_gettid));
}

TEST(SystemVersionTest, ParsesTheNumbersOfARelease) {
  const auto version = platform::systemVersionOfRelease("6.1.27-18-amd64");
  ASSERT_TRUE(version);
  EXPECT_EQ(version->major, 6);
  EXPECT_EQ(version->minor, 1);
  EXPECT_EQ(version->bugFix, 27);
}

TEST(SystemVersionTest, MissingNumbersAreZero) {
  EXPECT_EQ(platform::systemVersionOfRelease("6.18-rc2")->minor, 18);
  EXPECT_EQ(platform::systemVersionOfRelease("6.18-rc2")->bugFix, 0);
  EXPECT_EQ(platform::systemVersionOfRelease("7")->minor, 0);
  EXPECT_EQ(platform::systemVersionOfRelease("7.")->minor, 0);
}

TEST(SystemVersionTest, RejectsASign) {
  EXPECT_FALSE(platform::systemVersionOfRelease("-6.1"));
  EXPECT_EQ(platform::systemVersionOfRelease("6.-2")->minor, 0);
}

TEST(SystemVersionTest, IgnoresANumberThatOverflows) {
  EXPECT_FALSE(platform::systemVersionOfRelease("2147483648.1"));
  EXPECT_EQ(platform::systemVersionOfRelease("2147483647.2147483648.3")->major, 2147483647);
  EXPECT_EQ(platform::systemVersionOfRelease("2147483647.2147483648.3")->minor, 0);
  EXPECT_EQ(platform::systemVersionOfRelease("2147483647.2147483648.3")->bugFix, 0);
}

TEST(SystemVersionTest, FailsWithoutANumber) {
  EXPECT_FALSE(platform::systemVersionOfRelease(""));
  EXPECT_FALSE(platform::systemVersionOfRelease("next"));
}

TEST(SystemVersionTest, ReadsTheRunningSystem) {
  ASSERT_TRUE(platform::systemVersion());
  EXPECT_GT(platform::systemVersion()->major, 0);
}

TEST(ThreadIdTest, EqualsTheKernelsNumber) {
  EXPECT_EQ(platform::currentThreadId(), kernelThreadId());
  std::thread([] { EXPECT_EQ(platform::currentThreadId(), kernelThreadId()); }).join();
}

TEST(ThreadIdTest, ChangesAfterAFork) {
  (void)platform::currentThreadId();
  EXPECT_EQ(support::inChild([] { return platform::currentThreadId() == kernelThreadId() ? 0 : 1; }), 0);
}

TEST(ProcessIdTest, ChangesAfterAFork) {
  EXPECT_EQ(platform::currentProcessId(), ::getpid());
  EXPECT_EQ(support::inChild([] { return platform::currentProcessId() == ::getpid() ? 0 : 1; }), 0);
}

TEST(BundleTest, DoesNotDependOnTheWorkingFolder) {
  const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const auto previous = std::filesystem::current_path();
  std::filesystem::current_path("/");
  EXPECT_EQ(platform::bundlePath(), folder.string());
  std::filesystem::current_path(previous);
}

TEST(BundleTest, KeepsThePathOfARemovedExecutable) {
  const support::TemporaryFolder folder;
  const std::string copy = folder / "a program";
  std::filesystem::copy("/proc/self/exe", copy);
  const std::string filter = "--gtest_filter=BundleTest.DISABLED_RemovesItself";
  support::Child program([&] {
    ::execl(copy.c_str(), copy.c_str(), filter.c_str(), "--gtest_also_run_disabled_tests", "--gtest_brief=1", nullptr);
    return 127;
  });
  EXPECT_EQ(program.wait(), 0);
}

// Executed in a separate process by the test above.
TEST(BundleTest, DISABLED_RemovesItself) {
  const std::string path = platform::executablePath();
  std::filesystem::remove(path);
  EXPECT_EQ(platform::executablePath(), path);
  EXPECT_EQ(platform::executableArchitectures().size(), 1u);
}

TEST(BundleTest, ReadsTheArchitectureFromTheElfHeader) {
  using platform::Architecture;
  const support::TemporaryFolder folder;
  const auto architecture = [&](unsigned char elfClass, unsigned char order, unsigned machine) {
    std::string header =
        "\x7f"
        "ELF";
    header += {static_cast<char>(elfClass), static_cast<char>(order)};
    header.resize(18);
    const auto low = static_cast<char>(machine & 0xff), high = static_cast<char>(machine >> 8);
    header += order == 1 ? std::string{low, high} : std::string{high, low};
    support::writeFile(folder / "program", header);
    return platform::architecturesOf(folder / "program");
  };
  EXPECT_EQ(architecture(2, 1, 62), std::vector{Architecture::kX64});
  EXPECT_EQ(architecture(1, 1, 62), std::vector{Architecture::kOther}) << "x32";
  EXPECT_EQ(architecture(1, 1, 3), std::vector{Architecture::kX86});
  EXPECT_EQ(architecture(1, 2, 20), std::vector{Architecture::kPpc});
  EXPECT_EQ(architecture(2, 2, 21), std::vector{Architecture::kPpc64});
  EXPECT_EQ(architecture(2, 1, 21), std::vector{Architecture::kPpc64});
  EXPECT_EQ(architecture(2, 1, 183), std::vector{Architecture::kOther});
}

TEST(BundleTest, OtherFilesHaveNoArchitecture) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "script", "#!/bin/sh\nexit 0; exit 0; exit 0\n");
  support::writeFile(folder / "short",
                     "\x7f"
                     "ELF");
  for (const std::string& file : {folder / "script", folder / "short", folder / "none", folder.path()})
    EXPECT_TRUE(platform::architecturesOf(file).empty()) << file;
}

}  // namespace
