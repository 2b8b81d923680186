#include "nativeutils/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/FileKind.h"
#include "tests/nativeutils/FileSystemTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Interruptions.h"
#include "tests/support/Trees.h"

namespace {

using nativeutils_test::FileSystemTest;
using support::makeFolder;
using support::makeLink;
using support::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using RenameTest = FileSystemTest;

TEST_F(RenameTest, RenamesAFile) {
  support::writeFile(folder / "a", "text");
  EXPECT_TRUE(utilRenamePathToPath(folder / "a", folder / "b"));
  EXPECT_EQ(support::contentsOf(folder / "b"), "text");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(RenameTest, LogsTheError) {
  EXPECT_FALSE(utilRenamePathToPath(folder / "a", folder / "b"));
  EXPECT_THAT(logged(),
              ElementsAre("FATAL Failed to rename. Error code (2:No such file or directory). Directory from " +
                          folder / "a" + " to " + folder / "b" + "."));
}

using FolderDeletionTest = FileSystemTest;

TEST_F(FolderDeletionTest, SucceedsForAnEmptyPath) {
  EXPECT_TRUE(utilDeleteFolder("", false, false));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FolderDeletionTest, RemovesAFolderWithItsContents) {
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/.hidden", "");
  support::writeFile(folder / "t/line\nbreak\xff", "");
  EXPECT_TRUE(utilDeleteFolder(folder / "t", true, true));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FolderDeletionTest, RemovesAFile) {
  support::writeFile(folder / "file", "");
  EXPECT_TRUE(utilDeleteFolder(folder / "file", false, false));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

TEST_F(FolderDeletionTest, EndsPathsAtTheFirstNul) {
  using namespace std::string_literals;
  makeFolder(folder / "d");
  makeFolder(folder / "d/e");
  EXPECT_FALSE(utilDeleteFolder(folder / "d/e/.." + "\0"s, false, false));
  EXPECT_THAT(namesIn(folder / "d"), ElementsAre("e"));
  EXPECT_TRUE(utilDeleteFolder(folder / "d/e\0/x"s, false, false));
  EXPECT_THAT(namesIn(folder / "d"), IsEmpty());
  EXPECT_TRUE(utilDeleteFolder("\0/x"s, false, false));
  EXPECT_TRUE(utilDeleteFolderIfEmpty("\0/x"s));
}

TEST_F(FolderDeletionTest, LogsTheError) {
  EXPECT_FALSE(utilDeleteFolder(folder / "missing", false, false));
  EXPECT_THAT(logged(),
              ElementsAre("INFO NOTE Could not remove existing backup path. Error No such file or directory: " +
                          folder / "missing" + "."));
}

TEST_F(FolderDeletionTest, RemovesManyFilesWithFewDescriptors) {
  makeFolder(folder / "t");
  for (int i = 0; i < 10000; ++i)
    support::writeFile(folder / "t/" + std::to_string(i), "");
  support::Child limited([&] {
    support::limitDescriptors(3);
    const support::Interruptions interruptions;
    return utilDeleteFolder(folder / "t", false, false) ? 0 : 1;
  });
  EXPECT_EQ(limited.wait(), 0);
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

using EmptyFolderDeletionTest = FileSystemTest;

TEST_F(EmptyFolderDeletionTest, SucceedsForAnEmptyPath) {
  EXPECT_TRUE(utilDeleteFolderIfEmpty(""));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(EmptyFolderDeletionTest, RemovesAnEmptyFolder) {
  makeFolder(folder / "t");
  EXPECT_TRUE(utilDeleteFolderIfEmpty(folder / "t"));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(EmptyFolderDeletionTest, RemovesALinkInsteadOfItsFolder) {
  makeFolder(folder / "t");
  makeLink("t", folder / "link");
  EXPECT_TRUE(utilDeleteFolderIfEmpty(folder / "link"));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("t"));
}

TEST_F(EmptyFolderDeletionTest, KeepsAFolderWithAHiddenFile) {
  makeFolder(folder / "t");
  support::writeFile(folder / "t/.hidden", "");
  EXPECT_FALSE(utilDeleteFolderIfEmpty(folder / "t"));
  EXPECT_THAT(namesIn(folder / "t"), ElementsAre(".hidden"));
  EXPECT_THAT(logged(), ElementsAre("INFO utilDeleteFolderIfEmpty.Files exist at path. " + folder / "t" + "."));
}

TEST_F(EmptyFolderDeletionTest, KeepsAFile) {
  support::writeFile(folder / "file", "");
  EXPECT_FALSE(utilDeleteFolderIfEmpty(folder / "file"));
  EXPECT_FALSE(utilDeleteFolderIfEmpty(folder / "missing"));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
  EXPECT_THAT(logged(), ElementsAre("WARN utilDeleteFolderIfEmpty.Not a directory: " + folder / "file" + ".",
                                    "WARN utilDeleteFolderIfEmpty.Not a directory: " + folder / "missing" + "."));
}

TEST_F(EmptyFolderDeletionTest, LogsTheError) {
  makeFolder(folder / "closed");
  makeFolder(folder / "closed/t");
  ASSERT_EQ(::chmod((folder / "closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilDeleteFolderIfEmpty(folder / "closed/t"); }));
  EXPECT_THAT(logged(), ElementsAre("WARN utilDeleteFolderIfEmpty.Could not remove path:" + folder / "closed/t" +
                                    " Error:Permission denied: " + folder / "closed/t" + "."));
}

TEST_F(EmptyFolderDeletionTest, KeepsAnUnreadableFolderWithContents) {
  makeFolder(folder / "t");
  support::writeFile(folder / "t/file", "");
  ASSERT_EQ(::chmod((folder / "t").c_str(), 0300), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilDeleteFolderIfEmpty(folder / "t"); }));
  EXPECT_TRUE(platform::exists(folder / "t/file"));
  EXPECT_THAT(logged(), ElementsAre("WARN utilDeleteFolderIfEmpty.Could not remove path:" + folder / "t" +
                                    " Error:Directory not empty: " + folder / "t" + "."));
}

using PermissionTest = FileSystemTest;

TEST_F(PermissionTest, ReadIsOneAndOtherValuesAreWrite) {
  makeFolder(folder / "readable");
  makeFolder(folder / "writable");
  ASSERT_EQ(::chmod((folder / "readable").c_str(), 0500), 0);
  ASSERT_EQ(::chmod((folder / "writable").c_str(), 0300), 0);
  EXPECT_TRUE(withoutPowers([&] {
    return utilFolderHasPermission(folder / "readable", PermissionType_Read) &&
           !utilFolderHasPermission(folder / "writable", PermissionType_Read);
  }));
  for (const int type : {2, 0, 3, -1}) {
    EXPECT_TRUE(withoutPowers([&] {
      return utilFolderHasPermission(folder / "writable", static_cast<PermissionType>(type)) &&
             !utilFolderHasPermission(folder / "readable", static_cast<PermissionType>(type));
    })) << type;
  }
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(PermissionTest, IsMissingForAMissingFolder) {
  support::writeFile(folder / "file", "");
  for (const char* name : {"missing", "file"}) {
    EXPECT_FALSE(utilFolderHasPermission(folder / name, PermissionType_Read));
    EXPECT_FALSE(utilFolderHasPermission(folder / name, PermissionType_Write));
  }
}

using FileDeletionTest = FileSystemTest;

TEST_F(FileDeletionTest, RemovesAFileOrALink) {
  support::writeFile(folder / "file", "");
  makeLink("file", folder / "link");
  EXPECT_TRUE(utilDeleteFileIfExitsAtPath(folder / "link", false));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
  EXPECT_TRUE(utilDeleteFileIfExitsAtPath(folder / "file", false));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FileDeletionTest, KeepsFoldersAndDanglingLinks) {
  makeFolder(folder / "t");
  makeLink("missing", folder / "dangling");
  for (const char* name : {"t", "missing", "dangling"})
    EXPECT_TRUE(utilDeleteFileIfExitsAtPath(folder / name, true));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("dangling", "t"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FileDeletionTest, LogsTheError) {
  makeFolder(folder / "closed");
  support::writeFile(folder / "closed/file", "");
  ASSERT_EQ(::chmod((folder / "closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilDeleteFileIfExitsAtPath(folder / "closed/file", false); }));
  EXPECT_THAT(logged(), ElementsAre("FATAL Error in utilDeleteFileIfExitsAtPath " + folder / "closed/file" +
                                    ". error Permission denied: " + folder / "closed/file"));
}

using SubFolderTest = FileSystemTest;

TEST_F(SubFolderTest, ListsFoldersIncludingHiddenOnes) {
  makeFolder(folder / "a");
  makeFolder(folder / "a/inside");
  makeFolder(folder / ".c");
  support::writeFile(folder / "b.txt", "");
  std::vector<std::string> names{"unchanged"};
  EXPECT_TRUE(utilGetSubFolderList(folder.path(), names));
  ASSERT_EQ(names.size(), 3u);
  EXPECT_EQ(names[0], "unchanged");
  EXPECT_THAT(names, UnorderedElementsAre("unchanged", "a", ".c"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(SubFolderTest, FollowsLinks) {
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/file", "");
  makeLink("a", folder / "t/to folder");
  makeLink("file", folder / "t/to file");
  makeLink("missing", folder / "t/dangling");
  makeLink("loop", folder / "t/loop");
  makeLink("t", folder / "link");
  std::vector<std::string> names;
  EXPECT_TRUE(utilGetSubFolderList(folder / "link", names));
  EXPECT_THAT(names, UnorderedElementsAre("a", "to folder"));
}

TEST_F(SubFolderTest, SucceedsWithoutSubfolders) {
  support::writeFile(folder / "file", "");
  std::vector<std::string> names;
  EXPECT_TRUE(utilGetSubFolderList(folder.path(), names));
  EXPECT_THAT(names, IsEmpty());
}

TEST_F(SubFolderTest, AcceptsAPathFromTheNames) {
  for (int i = 0; i < 20; ++i)
    makeFolder(folder / std::to_string(i));
  std::vector<std::string> names{folder.path()};
  names.shrink_to_fit();
  EXPECT_TRUE(utilGetSubFolderList(names[0], names));
  EXPECT_EQ(names.size(), 21u);
  EXPECT_EQ(names[0], folder.path());
}

TEST_F(SubFolderTest, EndsPathsAtTheFirstNul) {
  using namespace std::string_literals;
  makeFolder(folder / "a");
  std::vector<std::string> names;
  EXPECT_TRUE(utilGetSubFolderList(folder.path() + "\0"s, names));
  EXPECT_THAT(names, ElementsAre("a"));
}

TEST_F(SubFolderTest, NeedsAFolder) {
  support::writeFile(folder / "file", "");
  std::vector<std::string> names{"unchanged"};
  EXPECT_FALSE(utilGetSubFolderList(folder / "file", names));
  EXPECT_FALSE(utilGetSubFolderList(folder / "missing", names));
  EXPECT_THAT(names, ElementsAre("unchanged"));
}

using DisplayNameTest = FileSystemTest;

TEST_F(DisplayNameTest, IsSetOnlyForAMissingPath) {
  std::string name = "unchanged";
  EXPECT_FALSE(utilGetDisplayNameForFolderPath("", name));
  EXPECT_FALSE(utilGetDisplayNameForFolderPath(folder.path(), name));
  EXPECT_EQ(name, "unchanged");
  EXPECT_FALSE(utilGetDisplayNameForFolderPath(std::string(1, '\0'), name));
  EXPECT_TRUE(utilGetDisplayNameForFolderPath(folder / "missing", name));
  EXPECT_EQ(name, "");
  EXPECT_THAT(logged(), IsEmpty());
}

}  // namespace
