#include "platform/Users.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <string>

#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Mounts.h"

namespace {

using platform::findFolder;
using platform::FolderDomain;
using platform::FolderKind;
using platform::FolderSearch;

// Returns the mode of "/usr/local/share" after `findFolder` created it under a umask; "" if this process must not
// mount.
std::string modeOfNewFolders(mode_t mask) {
  const support::Shared<unsigned> mode;
  const int result = support::withOwnMounts([&] {
    if (!support::mountMemory("/usr/local", 1 << 20)) return support::kImpossible;
    ::umask(mask);
    const FolderSearch found = findFolder(FolderDomain::kLocal, FolderKind::kApplicationSupport);
    *mode = support::modeOf("/usr/local/share");
    return found.failure == FolderSearch::Failure::kNone && found.path == "/usr/local/share" ? 0 : 1;
  });
  if (result == support::kImpossible) return "";
  EXPECT_EQ(result, 0);
  std::ostringstream octal;
  octal << std::oct << *mode;
  return octal.str();
}

TEST(StandardFoldersTest, CreatesSharedFoldersWithModeAndUmask) {
  if (modeOfNewFolders(0).empty()) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(modeOfNewFolders(0), "755");
  EXPECT_EQ(modeOfNewFolders(022), "755");
  EXPECT_EQ(modeOfNewFolders(027), "750");
  EXPECT_EQ(modeOfNewFolders(077), "700");
}

TEST(StandardFoldersTest, ReturnsThePathAfterAFailedCreation) {
  const int result = support::withOwnMounts([] {
    if (!support::mountMemory("/usr/local", 1 << 20)) return support::kImpossible;
    support::writeFile("/usr/local/share", "");
    const FolderSearch found = findFolder(FolderDomain::kLocal, FolderKind::kApplicationSupport);
    const bool failed = found.failure == FolderSearch::Failure::kFind && found.status == ENOTDIR;
    return failed && found.path == "/usr/local/share" ? 0 : 1;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(result, 0);
}

TEST(StandardFoldersTest, FailsForADomainWithoutThatKind) {
  for (const auto kind : {FolderKind::kApplications, FolderKind::kUtilities}) {
    for (const auto domain : {FolderDomain::kUser, FolderDomain::kSystem}) {
      const FolderSearch found = findFolder(domain, kind);
      EXPECT_EQ(found.failure, FolderSearch::Failure::kFind);
      EXPECT_EQ(found.status, ENOENT);
      EXPECT_EQ(found.path, "");
    }
  }
}

TEST(HomeFolderTest, IgnoresTheEnvironment) {
  const std::string home = support::ownHome();
  const std::string previous = std::getenv("HOME");
  ::setenv("HOME", "/nowhere", 1);
  EXPECT_EQ(platform::homeFolder(), home);
  ::setenv("HOME", previous.c_str(), 1);
}

TEST(HomeFolderTest, IsEmptyForAnUnknownUser) {
  const support::PasswordDatabase empty("");
  EXPECT_EQ(platform::homeFolder(), "");
}

TEST(HomeFolderTest, AcceptsALongPasswordEntry) {
  const std::string home = "/" + std::string(5000, 'h');
  const std::string user = std::to_string(::geteuid());
  const support::PasswordDatabase longHome("tester:x:" + user + ":" + user + ":tester:" + home + ":/bin/sh\n");
  EXPECT_EQ(platform::homeFolder(), home);
}

TEST(TildeTest, ExpandsToTheHomeFolder) {
  const std::string home = support::ownHome();
  EXPECT_EQ(platform::expandingTilde("~"), home);
  EXPECT_EQ(platform::expandingTilde("~/"), home);
  EXPECT_EQ(platform::expandingTilde("~/new/deeper/"), home + "/new/deeper");
}

TEST(TildeTest, ExpandsALoginName) {
  const support::PasswordDatabase two("ann:x:4711:0::/home/ann:/bin/sh\nbob:x:4712:0::/home/bob/:/bin/sh\n");
  EXPECT_EQ(platform::expandingTilde("~ann"), "/home/ann");
  EXPECT_EQ(platform::expandingTilde("~bob/x"), "/home/bob/x");
}

TEST(TildeTest, KeepsThePathOfAnUnknownUser) {
  const support::PasswordDatabase empty("");
  for (const char* path : {"~", "~/x/", "~no-such-user", "~no-such-user/x/"})
    EXPECT_EQ(platform::expandingTilde(path), path);
}

TEST(TildeTest, IsExpandedOnlyAtTheBeginning) {
  for (const char* path : {"", "/", "/tmp/~", "a~", "/tmp//x/", "./~"})
    EXPECT_EQ(platform::expandingTilde(path), path);
}

}  // namespace
