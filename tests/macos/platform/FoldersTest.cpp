#include "platform/Users.h"

#include <unistd.h>

#include <filesystem>

#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

using platform::findFolder;
using platform::FolderDomain;
using platform::FolderKind;
using platform::FolderSearch;
using testing::ElementsAre;

using FoldersTest = macos_test::SystemTest;

TEST_F(FoldersTest, AreAskedForByDomainAndKind) {
  const auto asked = [](FolderDomain domain, FolderKind kind) {
    EXPECT_EQ(findFolder(domain, kind).failure, FolderSearch::Failure::kNone);
    return doubles::takenCalls().front();
  };
  EXPECT_EQ(asked(FolderDomain::kUser, FolderKind::kApplicationSupport), "FSFindFolder -32763 asup create");
  EXPECT_EQ(asked(FolderDomain::kSystem, FolderKind::kApplicationSupport), "FSFindFolder -32768 asup create");
  EXPECT_EQ(asked(FolderDomain::kLocal, FolderKind::kApplicationSupport), "FSFindFolder -32765 asup create");
  EXPECT_EQ(asked(FolderDomain::kLocal, FolderKind::kApplications), "FSFindFolder -32765 apps create");
  EXPECT_EQ(asked(FolderDomain::kLocal, FolderKind::kUtilities), "FSFindFolder -32765 uti? create");
}

TEST_F(FoldersTest, OfTheUserAreMadeWhenTheyAreMissing) {
  const std::string home = support::freshHome();
  const FolderSearch search = findFolder(FolderDomain::kUser, FolderKind::kApplicationSupport);
  EXPECT_EQ(search.path, home + "/Library/Application Support");
  EXPECT_TRUE(std::filesystem::is_directory(search.path));
}

TEST_F(FoldersTest, ThatAreNotFoundHaveTheSystemsNumberAndNoPath) {
  doubles::failCall("FSFindFolder", -43);
  const FolderSearch search = findFolder(FolderDomain::kLocal, FolderKind::kUtilities);
  EXPECT_EQ(search.failure, FolderSearch::Failure::kFind);
  EXPECT_EQ(search.status, -43);
  EXPECT_EQ(search.path, "");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("FSFindFolder -32765 uti? create"));
}

TEST_F(FoldersTest, WithoutAPathHaveTheSystemsNumber) {
  doubles::failCall("FSRefMakePath", -2110);
  const FolderSearch search = findFolder(FolderDomain::kLocal, FolderKind::kApplications);
  EXPECT_EQ(search.failure, FolderSearch::Failure::kPath);
  EXPECT_EQ(search.status, -2110);
  EXPECT_EQ(search.path, "");
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("FSFindFolder -32765 apps create", "FSRefMakePath /Applications 1024"));
}

TEST_F(FoldersTest, WhosePathIsNoTextAreNotGiven) {
  const support::TemporaryFolder place;
  const std::string home = place / "\xff";
  std::filesystem::create_directory(home);
  const support::PasswordDatabase users(support::passwordEntry(::geteuid(), home));
  EXPECT_EQ(platform::homeFolder(), "");
  const FolderSearch search = findFolder(FolderDomain::kUser, FolderKind::kApplicationSupport);
  EXPECT_EQ(search.failure, FolderSearch::Failure::kText);
  EXPECT_EQ(search.path, "");
}

TEST_F(FoldersTest, OfMoreThan1023BytesHaveNoPath) {
  const support::PasswordDatabase longest(support::passwordEntry(::geteuid(), "/" + std::string(1022, 'h')));
  EXPECT_EQ(platform::homeFolder().size(), 1023u);
  const support::PasswordDatabase longer(support::passwordEntry(::geteuid(), "/" + std::string(1023, 'h')));
  EXPECT_EQ(platform::homeFolder(), "");
}

TEST_F(FoldersTest, WithoutAHomeFolderThereIsNone) {
  const support::PasswordDatabase nobody("");
  EXPECT_EQ(platform::homeFolder(), "");
  EXPECT_EQ(findFolder(FolderDomain::kUser, FolderKind::kApplicationSupport).failure, FolderSearch::Failure::kFind);
}

}  // namespace
