#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/FakeConsoleUser.h"
#include "tests/support/FakeLogin.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

using Lines = std::vector<std::string>;

class AdminTest : public testing::Test {
 protected:
  AdminTest() { support::fakeLogin = "tester"; }
  ~AdminTest() override { support::fakeLogin.clear(); }

  static std::string group(const std::string& name, gid_t number, const std::string& members) {
    return name + ":x:" + std::to_string(number) + ":" + members + "\n";
  }

  const std::string own = group("own", ::getegid(), "");
};

TEST_F(AdminTest, Group80IsAdminUnderAnyName) {
  const support::GroupDatabase groups(own + group("printers", 80, "tester"));
  EXPECT_TRUE(utilIsUserAdmin());
}

TEST_F(AdminTest, GroupAdminIsAdminWithAnyNumber) {
  const support::GroupDatabase groups(own + group("admin", 4711, "other,tester"));
  EXPECT_TRUE(utilIsUserAdmin());
}

TEST_F(AdminTest, OtherGroupsAreNotAdmin) {
  const support::GroupDatabase groups(own + group("admins", 4711, "tester") + group("admin", 4712, "other") +
                                      group("wheel", 80, "other"));
  EXPECT_FALSE(utilIsUserAdmin());
}

TEST_F(AdminTest, ChecksTheEffectiveGroup) {
  const support::GroupDatabase groups(group("admin", ::getegid(), ""));
  EXPECT_TRUE(utilIsUserAdmin());
}

TEST_F(AdminTest, ChecksOnlySixteenGroups) {
  std::string many = own;
  for (gid_t number = 5001; number < 5015; ++number)
    many += group("group" + std::to_string(number), number, "tester");
  {
    const support::GroupDatabase sixteen(many + group("admin", 6000, "tester") + group("last", 6001, "tester"));
    EXPECT_TRUE(utilIsUserAdmin());
  }
  const support::GroupDatabase seventeen(many + group("last", 6001, "tester") + group("admin", 6000, "tester"));
  EXPECT_FALSE(utilIsUserAdmin());
}

TEST_F(AdminTest, AProcessWithoutALoginIsNotAdmin) {
  support::fakeLogin.clear();
  const support::GroupDatabase groups(group("admin", ::getegid(), "tester"));
  EXPECT_FALSE(utilIsUserAdmin());
}

TEST_F(AdminTest, IgnoresGroupsWithoutAName) {
  const support::GroupDatabase groups("");
  EXPECT_FALSE(utilIsUserAdmin());
}

TEST(RootTest, IsTheUserWithEffectiveIdZero) {
  EXPECT_EQ(utilIsUserRoot(), ::geteuid() == 0);
}

TEST(RootTest, AnotherUserIsNotRoot) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change its user id";
  support::Child other([] { return ::seteuid(4711) == 0 && !utilIsUserRoot() ? 0 : 1; });
  EXPECT_EQ(other.wait(), 0);
}

class VersionTest : public nativeutils_test::LoggedTest {
 protected:
  static Lines parse(const std::string& text) {
    os_version version{-1, -1, -1};
    EXPECT_TRUE(utilGetOSVersionFromOSVersionString(text, version));
    return {std::to_string(version.major), std::to_string(version.minor), std::to_string(version.bugFix)};
  }

  static int compare(os_version a, os_version b) { return utilCompareOSVersion(a, b); }
};

TEST_F(VersionTest, ReturnsAndLogsTheRunningVersion) {
  utsname system{};
  ASSERT_EQ(::uname(&system), 0);
  os_version version{};
  EXPECT_TRUE(utilGetCurrentOSVersion(version));
  EXPECT_EQ(version.major, std::atol(system.release));
  EXPECT_EQ(logged(), Lines{"DEBUG System OS Version - major = " + std::to_string(version.major) + ", minor = " +
                            std::to_string(version.minor) + ", bugFix = " + std::to_string(version.bugFix)});
}

TEST_F(VersionTest, ParsesThePiecesBetweenDots) {
  EXPECT_EQ(parse("10.6.8"), (Lines{"10", "6", "8"}));
  EXPECT_EQ(parse("10.7"), (Lines{"10", "7", "0"}));
  EXPECT_EQ(parse("11..2"), (Lines{"11", "2", "0"}));
  EXPECT_EQ(parse(""), (Lines{"0", "0", "0"}));
  EXPECT_EQ(parse("..."), (Lines{"0", "0", "0"}));
  EXPECT_EQ(parse("1.2.3.4"), (Lines{"1", "2", "3"}));
}

TEST_F(VersionTest, ParsesPiecesLikeStrtol) {
  EXPECT_EQ(parse(" 6.x.-1a"), (Lines{"6", "0", "-1"}));
  EXPECT_EQ(parse("0x10.010.+5"), (Lines{"0", "10", "5"}));
  EXPECT_EQ(parse("99999999999999999999.1"), (Lines{std::to_string(LONG_MAX), "1", "0"}));
  EXPECT_EQ(parse(std::string("1\0.2.3", 6)), (Lines{"1", "0", "0"}));
}

TEST_F(VersionTest, TheFirstDifferenceDecides) {
  EXPECT_EQ(compare({10, 6, 8}, {10, 7, 0}), -1);
  EXPECT_EQ(compare({10, 7, 0}, {10, 6, 8}), 1);
  EXPECT_EQ(compare({9, 9, 9}, {10, 0, 0}), -1);
  EXPECT_EQ(compare({10, 6, 8}, {10, 6, 9}), -1);
  EXPECT_EQ(compare({10, 6, 8}, {10, 6, 7}), 1);
  EXPECT_EQ(compare({10, 6, 8}, {10, 6, 8}), 0);
}

TEST_F(VersionTest, ComparesSignedNumbers) {
  EXPECT_EQ(compare({-1, 0, 0}, {0, 0, 0}), -1);
  EXPECT_EQ(compare({0, INT64_MAX, 0}, {0, INT64_MIN, 0}), 1);
}

TEST(SelfTest, ReturnsNameAndFolderOfTheExecutable) {
  const auto executable = std::filesystem::read_symlink("/proc/self/exe");
  std::string name, path;
  EXPECT_TRUE(utilGetApplicationName(name));
  EXPECT_TRUE(utilGetSelfPath(path));
  EXPECT_EQ(name, executable.filename());
  EXPECT_EQ(path, executable.parent_path());
}

TEST(SelfTest, LanguageIsUnchanged) {
  std::string language = "previous";
  EXPECT_TRUE(utilGetOSLanguage(language));
  EXPECT_EQ(language, "previous");
}

TEST(SelfTest, Is64BitOnX64) {
#if defined(__x86_64__) && defined(__LP64__)
  EXPECT_TRUE(utilIs64Bit());
#else
  GTEST_SKIP() << "built for another processor";
#endif
}

TEST(SelfTest, IsNot64BitIfTheExecutableIsUnreadable) {
  support::Child child([] {
    const rlimit noDescriptors{0, 0};
    return ::setrlimit(RLIMIT_NOFILE, &noDescriptors) == 0 && !utilIs64Bit() ? 0 : 1;
  });
  EXPECT_EQ(child.wait(), 0);
}

}  // namespace
