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
    EXPECT_EQ(findFolder(domain, kind).failure, FolderSearch::Failure::none);
    return doubles::takenCalls().front();
  };
  EXPECT_EQ(asked(FolderDomain::user, FolderKind::applicationSupport), "FSFindFolder -32763 asup create");
  EXPECT_EQ(asked(FolderDomain::system, FolderKind::applicationSupport), "FSFindFolder -32768 asup create");
  EXPECT_EQ(asked(FolderDomain::local, FolderKind::applicationSupport), "FSFindFolder -32765 asup create");
  EXPECT_EQ(asked(FolderDomain::local, FolderKind::applications), "FSFindFolder -32765 apps create");
  EXPECT_EQ(asked(FolderDomain::local, FolderKind::utilities), "FSFindFolder -32765 uti? create");
}

TEST_F(FoldersTest, OfTheUserAreMadeWhenTheyAreMissing) {
  const std::string home = support::freshHome();
  const FolderSearch search = findFolder(FolderDomain::user, FolderKind::applicationSupport);
  EXPECT_EQ(search.path, home + "/Library/Application Support");
  EXPECT_TRUE(std::filesystem::is_directory(search.path));
}

TEST_F(FoldersTest, ThatAreNotFoundHaveTheSystemsNumberAndNoPath) {
  doubles::failCall("FSFindFolder", -43);
  const FolderSearch search = findFolder(FolderDomain::local, FolderKind::utilities);
  EXPECT_EQ(search.failure, FolderSearch::Failure::find);
  EXPECT_EQ(search.status, -43);
  EXPECT_EQ(search.path, "");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("FSFindFolder -32765 uti? create"));
}

TEST_F(FoldersTest, WithoutAPathHaveTheSystemsNumber) {
  doubles::failCall("FSRefMakePath", -2110);
  const FolderSearch search = findFolder(FolderDomain::local, FolderKind::applications);
  EXPECT_EQ(search.failure, FolderSearch::Failure::path);
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
  const FolderSearch search = findFolder(FolderDomain::user, FolderKind::applicationSupport);
  EXPECT_EQ(search.failure, FolderSearch::Failure::text);
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
  EXPECT_EQ(findFolder(FolderDomain::user, FolderKind::applicationSupport).failure, FolderSearch::Failure::find);
}

}  // namespace
