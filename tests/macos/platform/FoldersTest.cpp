#include <unistd.h>

#include <filesystem>

#include "platform/Users.h"
#include "tests/macos/platform/PlatformTest.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

using platform::findFolder;
using platform::FolderDomain;
using platform::FolderKind;
using platform::FolderSearch;

using FoldersTest = macos_test::PlatformTest;

TEST_F(FoldersTest, AreFoundByDomainAndKind) {
  const auto pathOf = [](FolderDomain domain, FolderKind kind) {
    const FolderSearch search = findFolder(domain, kind);
    EXPECT_EQ(search.failure, FolderSearch::Failure::kNone);
    return search.path;
  };
  EXPECT_EQ(pathOf(FolderDomain::kSystem, FolderKind::kApplicationSupport), "/System/Library/Application Support");
  EXPECT_EQ(pathOf(FolderDomain::kLocal, FolderKind::kApplicationSupport), "/Library/Application Support");
  EXPECT_EQ(pathOf(FolderDomain::kLocal, FolderKind::kApplications), "/Applications");
  EXPECT_EQ(pathOf(FolderDomain::kLocal, FolderKind::kUtilities), "/Applications/Utilities");
}

TEST_F(FoldersTest, OfTheUserAreCreatedIfMissing) {
  const std::string home = support::freshHome();
  const FolderSearch search = findFolder(FolderDomain::kUser, FolderKind::kApplicationSupport);
  EXPECT_EQ(search.path, home + "/Library/Application Support");
  EXPECT_TRUE(std::filesystem::is_directory(search.path));
}

TEST_F(FoldersTest, ReportTheStatusOfAFailedSearch) {
  doubles::failCall("FSFindFolder", -43);
  const FolderSearch search = findFolder(FolderDomain::kLocal, FolderKind::kUtilities);
  EXPECT_EQ(search.failure, FolderSearch::Failure::kFind);
  EXPECT_EQ(search.status, -43);
  EXPECT_EQ(search.path, "");
}

TEST_F(FoldersTest, ReportTheStatusOfAFailedConversion) {
  doubles::failCall("FSRefMakePath", -2110);
  const FolderSearch search = findFolder(FolderDomain::kLocal, FolderKind::kApplications);
  EXPECT_EQ(search.failure, FolderSearch::Failure::kPath);
  EXPECT_EQ(search.status, -2110);
  EXPECT_EQ(search.path, "");
}

TEST_F(FoldersTest, MustHaveAUtf8Path) {
  const support::TemporaryFolder place;
  const std::string home = place / "\xff";
  std::filesystem::create_directory(home);
  const support::PasswordDatabase users(support::passwordEntry(::geteuid(), home));
  EXPECT_EQ(platform::homeFolder(), "");
  const FolderSearch search = findFolder(FolderDomain::kUser, FolderKind::kApplicationSupport);
  EXPECT_EQ(search.failure, FolderSearch::Failure::kText);
  EXPECT_EQ(search.path, "");
}

TEST_F(FoldersTest, HavePathsOfAtMost1023Bytes) {
  const support::PasswordDatabase longest(support::passwordEntry(::geteuid(), "/" + std::string(1022, 'h')));
  EXPECT_EQ(platform::homeFolder().size(), 1023u);
  const support::PasswordDatabase longer(support::passwordEntry(::geteuid(), "/" + std::string(1023, 'h')));
  EXPECT_EQ(platform::homeFolder(), "");
}

TEST_F(FoldersTest, OfAUserNeedAHomeFolder) {
  const support::PasswordDatabase empty("");
  EXPECT_EQ(platform::homeFolder(), "");
  EXPECT_EQ(findFolder(FolderDomain::kUser, FolderKind::kApplicationSupport).failure, FolderSearch::Failure::kFind);
}

}  // namespace
