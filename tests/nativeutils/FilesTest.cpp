#include "nativeutils/Files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <functional>

#include "platform/FileKind.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Interruptions.h"
#include "tests/support/Mounts.h"
#include "tests/support/Powers.h"
#include "tests/support/Trees.h"

namespace {

using support::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FilesTest : public nativeutils_test::LoggedTest {
 protected:
  void makeFolder(const std::string& path) { ASSERT_EQ(::mkdir(path.c_str(), 0700), 0) << path; }
  void makeLink(const std::string& target, const std::string& path) {
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path;
  }

  // Runs `body` where permission bits hold even for the super-user.
  static bool withoutPowers(const std::function<bool()>& body) {
    support::Child powerless([&] { return support::giveUpPowers() && body() ? 0 : 1; });
    return powerless.wait() == 0;
  }

  const support::TemporaryFolder folder;
};

using RenamingTest = FilesTest;

TEST_F(RenamingTest, GivesAnObjectAnotherPath) {
  support::writeFile(folder / "a", "text");
  EXPECT_TRUE(utilRenamePathToPath(folder / "a", folder / "b"));
  EXPECT_EQ(support::contentsOf(folder / "b"), "text");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(RenamingTest, SaysWhyItFailed) {
  EXPECT_FALSE(utilRenamePathToPath(folder / "a", folder / "b"));
  EXPECT_THAT(logged(),
              ElementsAre("FATAL Failed to rename. Error code (2:No such file or directory). Directory from " +
                          folder / "a" + " to " + folder / "b" + "."));
}

using FolderDeletionTest = FilesTest;

TEST_F(FolderDeletionTest, OfAnEmptyPathIsDone) {
  EXPECT_TRUE(utilDeleteFolder("", false, false));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FolderDeletionTest, TakesAFolderWithEverythingInIt) {
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/.hidden", "");
  support::writeFile(folder / "t/line\nbreak\xff", "");
  EXPECT_TRUE(utilDeleteFolder(folder / "t", true, true));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FolderDeletionTest, TakesAFileToo) {
  support::writeFile(folder / "file", "");
  EXPECT_TRUE(utilDeleteFolder(folder / "file", false, false));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

TEST_F(FolderDeletionTest, APathEndsAtItsFirstNul) {
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

TEST_F(FolderDeletionTest, SaysWhyItFailed) {
  EXPECT_FALSE(utilDeleteFolder(folder / "missing", false, false));
  EXPECT_THAT(logged(),
              ElementsAre("INFO NOTE Could not remove existing backup path. Error No such file or directory: " +
                          folder / "missing" + "."));
}

TEST_F(FolderDeletionTest, TakesManyFilesWithFewDescriptors) {
  makeFolder(folder / "t");
  for (int i = 0; i < 10000; ++i)
    support::writeFile(folder / "t/" + std::to_string(i), "");
  support::Child poor([&] {
    support::limitDescriptors(3);
    const support::Interruptions interruptions;
    return utilDeleteFolder(folder / "t", false, false) ? 0 : 1;
  });
  EXPECT_EQ(poor.wait(), 0);
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

using EmptyFolderDeletionTest = FilesTest;

TEST_F(EmptyFolderDeletionTest, OfAnEmptyPathIsDone) {
  EXPECT_TRUE(utilDeleteFolderIfEmpty(""));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(EmptyFolderDeletionTest, TakesAnEmptyFolder) {
  makeFolder(folder / "t");
  EXPECT_TRUE(utilDeleteFolderIfEmpty(folder / "t"));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(EmptyFolderDeletionTest, TakesALinkToAnEmptyFolderAndNotTheFolder) {
  makeFolder(folder / "t");
  makeLink("t", folder / "link");
  EXPECT_TRUE(utilDeleteFolderIfEmpty(folder / "link"));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("t"));
}

TEST_F(EmptyFolderDeletionTest, AHiddenFileCounts) {
  makeFolder(folder / "t");
  support::writeFile(folder / "t/.hidden", "");
  EXPECT_FALSE(utilDeleteFolderIfEmpty(folder / "t"));
  EXPECT_THAT(namesIn(folder / "t"), ElementsAre(".hidden"));
  EXPECT_THAT(logged(), ElementsAre("INFO utilDeleteFolderIfEmpty.Files exist at path. " + folder / "t" + "."));
}

TEST_F(EmptyFolderDeletionTest, LeavesAFileAlone) {
  support::writeFile(folder / "file", "");
  EXPECT_FALSE(utilDeleteFolderIfEmpty(folder / "file"));
  EXPECT_FALSE(utilDeleteFolderIfEmpty(folder / "missing"));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
  EXPECT_THAT(logged(), ElementsAre("WARN utilDeleteFolderIfEmpty.Not a directory: " + folder / "file" + ".",
                                    "WARN utilDeleteFolderIfEmpty.Not a directory: " + folder / "missing" + "."));
}

TEST_F(EmptyFolderDeletionTest, SaysWhyItFailed) {
  makeFolder(folder / "closed");
  makeFolder(folder / "closed/t");
  ASSERT_EQ(::chmod((folder / "closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilDeleteFolderIfEmpty(folder / "closed/t"); }));
  EXPECT_THAT(logged(), ElementsAre("WARN utilDeleteFolderIfEmpty.Could not remove path:" + folder / "closed/t" +
                                    " Error:Permission denied: " + folder / "closed/t" + "."));
}

TEST_F(EmptyFolderDeletionTest, KeepsWhatItCannotSee) {
  makeFolder(folder / "t");
  support::writeFile(folder / "t/file", "");
  ASSERT_EQ(::chmod((folder / "t").c_str(), 0300), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilDeleteFolderIfEmpty(folder / "t"); }));
  EXPECT_TRUE(platform::exists(folder / "t/file"));
  EXPECT_THAT(logged(), ElementsAre("WARN utilDeleteFolderIfEmpty.Could not remove path:" + folder / "t" +
                                    " Error:Directory not empty: " + folder / "t" + "."));
}

using PermissionTest = FilesTest;

TEST_F(PermissionTest, ReadIsOneAndEverythingElseWrite) {
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

TEST_F(PermissionTest, NobodyHasItForAFolderThatIsNotThere) {
  support::writeFile(folder / "file", "");
  for (const char* name : {"missing", "file"}) {
    EXPECT_FALSE(utilFolderHasPermission(folder / name, PermissionType_Read));
    EXPECT_FALSE(utilFolderHasPermission(folder / name, PermissionType_Write));
  }
}

using FileDeletionTest = FilesTest;

TEST_F(FileDeletionTest, TakesAFileAndOfALinkTheLink) {
  support::writeFile(folder / "file", "");
  makeLink("file", folder / "link");
  EXPECT_TRUE(utilDeleteFileIfExitsAtPath(folder / "link", false));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
  EXPECT_TRUE(utilDeleteFileIfExitsAtPath(folder / "file", false));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FileDeletionTest, LeavesFoldersAndNothingAlone) {
  makeFolder(folder / "t");
  makeLink("missing", folder / "dangling");
  for (const char* name : {"t", "missing", "dangling"})
    EXPECT_TRUE(utilDeleteFileIfExitsAtPath(folder / name, true));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("dangling", "t"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FileDeletionTest, SaysWhyItFailed) {
  makeFolder(folder / "closed");
  support::writeFile(folder / "closed/file", "");
  ASSERT_EQ(::chmod((folder / "closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilDeleteFileIfExitsAtPath(folder / "closed/file", false); }));
  EXPECT_THAT(logged(), ElementsAre("FATAL Error in utilDeleteFileIfExitsAtPath " + folder / "closed/file" +
                                    ". error Permission denied: " + folder / "closed/file"));
}

class CopyingTest : public FilesTest {
 protected:
  CopyingTest() {
    makeFolder(folder / "x");
    makeFolder(folder / "y");
    support::writeFile(folder / "x/f.txt", "new");
  }

  bool copy() const { return utilCopySrcFileToDstFolder(folder / "x/f.txt", folder / "y", false); }

  std::string couldNotCopy(const std::string& why, const std::string& from, const std::string& to) const {
    return "FATAL Error Failed to copy. Error(" + why + "). Src file (" + from + ") to dst file(" + to + ").";
  }
};

TEST_F(CopyingTest, ReplacesTheFileInTheFolder) {
  support::writeFile(folder / "y/f.txt", "old and longer");
  EXPECT_TRUE(copy());
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "new");
  EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(CopyingTest, ReplacesALinkAndNotWhatItLeadsTo) {
  support::writeFile(folder / "precious", "old");
  makeLink("../precious", folder / "y/f.txt");
  EXPECT_TRUE(copy());
  EXPECT_EQ(support::contentsOf(folder / "precious"), "old");
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "new");
}

TEST_F(CopyingTest, BreaksAHardLinkToTheSource) {
  ASSERT_EQ(::link((folder / "x/f.txt").c_str(), (folder / "y/f.txt").c_str()), 0);
  EXPECT_TRUE(copy());
  support::writeFile(folder / "y/f.txt", "changed");
  EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
}

TEST_F(CopyingTest, NeedsAFile) {
  for (const std::string& source : {folder / "missing", folder / "x"})
    EXPECT_FALSE(utilCopySrcFileToDstFolder(source, folder / "y", false));
  EXPECT_THAT(logged(), ElementsAre("FATAL Error Src file (" + folder / "missing" + ") does not exits.",
                                    "FATAL Error Src file (" + folder / "x" + ") does not exits."));
}

TEST_F(CopyingTest, NeedsAFolder) {
  for (const std::string& target : {folder / "missing", folder / "x/f.txt"})
    EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/f.txt", target, false));
  const std::string end = ") ... either dst does not exits or not a folder.";
  EXPECT_THAT(logged(), ElementsAre("FATAL Error Failed to copy src file to dst (" + folder / "missing" + end,
                                    "FATAL Error Failed to copy src file to dst (" + folder / "x/f.txt" + end));
}

TEST_F(CopyingTest, DoesNotReplaceAFolder) {
  makeFolder(folder / "y/f.txt");
  EXPECT_FALSE(copy());
  EXPECT_THAT(logged(),
              ElementsAre(couldNotCopy("File exists: " + folder / "y/f.txt", folder / "x/f.txt", folder / "y/f.txt")));
}

TEST_F(CopyingTest, SaysWhenTheFormerFileStays) {
  support::writeFile(folder / "y/f.txt", "old");
  ASSERT_EQ(::chmod((folder / "y").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !copy(); }));
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "old");
  EXPECT_THAT(logged(), ElementsAre("FATAL Error in utilDeleteFileIfExitsAtPath " + folder / "y/f.txt" +
                                        ". error Permission denied: " + folder / "y/f.txt",
                                    "FATAL unable to delete dst file (" + folder / "y/f.txt" + ")."));
}

TEST_F(CopyingTest, AFileIsNotLostByBeingCopiedOverItself) {
  makeLink("x", folder / "also x");
  for (const std::string& target : {folder / "x", folder / "x/", folder / "also x"}) {
    EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/f.txt", target, false));
    EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
  }
  ASSERT_EQ(logged().size(), 3u);
  EXPECT_EQ(logged()[0], couldNotCopy("File exists: " + folder / "x/f.txt", folder / "x/f.txt", folder / "x/f.txt"));
}

TEST_F(CopyingTest, AFileIsNotLostByBeingReplacedWithALinkToIt) {
  support::writeFile(folder / "y/f.txt", "precious");
  ASSERT_EQ(::unlink((folder / "x/f.txt").c_str()), 0);
  makeLink("../y/f.txt", folder / "x/f.txt");
  EXPECT_FALSE(copy());
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "precious");
}

TEST_F(CopyingTest, AFileIsNotLostByBeingReplacedWithALinkThatWouldLeadBack) {
  makeFolder(folder / "z");
  support::writeFile(folder / "real", "precious");
  makeLink("../real", folder / "y/f");
  makeLink("../y/f", folder / "x/f");
  makeLink("../x/f", folder / "z/f");
  for (const std::string& source : {folder / "x/f", folder / "z/f"}) {
    EXPECT_FALSE(utilCopySrcFileToDstFolder(source, folder / "y", false)) << source;
    EXPECT_EQ(support::contentsOf(folder / "y/f"), "precious");
  }
  EXPECT_TRUE(utilCopySrcFileToDstFolder(folder / "y/f", folder / "z", false));
  EXPECT_EQ(std::filesystem::read_symlink(folder / "z/f"), "../real");
}

TEST_F(CopyingTest, APathEndsAtItsFirstNul) {
  using namespace std::string_literals;
  EXPECT_TRUE(utilCopySrcFileToDstFolder(folder / "x/f.txt\0/other"s, folder / "y\0/z"s, false));
  EXPECT_THAT(namesIn(folder / "y"), ElementsAre("f.txt"));
  EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/f.txt\0"s, folder / "x\0"s, false));
  EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
}

TEST_F(CopyingTest, APipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo((folder / "x/pipe").c_str(), 0600), 0);
  EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/pipe", folder / "y", false));
  EXPECT_THAT(logged(), ElementsAre(couldNotCopy("Operation not supported: " + folder / "x/pipe", folder / "x/pipe",
                                                 folder / "y/pipe")));
}

TEST_F(CopyingTest, LeavesNoPieceOnAFullDisk) {
  support::writeFile(folder / "x/f.txt", std::string(3000000, 'x'));
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(folder / "y", 1 << 20)) return support::kImpossible;
    return !copy() && namesIn(folder / "y").empty() ? 0 : 1;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
  EXPECT_THAT(logged(), ElementsAre(couldNotCopy("No space left on device: " + folder / "y/f.txt", folder / "x/f.txt",
                                                 folder / "y/f.txt")));
}

class OwnerTest : public FilesTest {
 protected:
  static bool asRoot() { return ::geteuid() == 0; }

  static uid_t ownerOf(const std::string& path) {
    struct stat object {};
    EXPECT_EQ(::lstat(path.c_str(), &object), 0) << path;
    return object.st_uid;
  }

  void giveToSomebody(const std::string& path) { ASSERT_EQ(::lchown(path.c_str(), 4711, 4711), 0) << path; }

  std::string couldNotChange(const std::string& path, const std::string& why) const {
    return "WARN Failed to change owner and group. Errorno " + why + " for ptah " + path + ".";
  }
  static constexpr const char* notPermitted = "(1) error msg(Operation not permitted)";
};

TEST_F(OwnerTest, TheWalkCannotStartAtAnEmptyPath) {
  EXPECT_FALSE(utilChown(""));
  EXPECT_THAT(logged(), ElementsAre("WARN Failed to open fts stream. ."));
}

TEST_F(OwnerTest, APathEndsAtItsFirstNul) {
  using namespace std::string_literals;
  EXPECT_FALSE(utilChown("\0x"s));
  EXPECT_THAT(logged(), ElementsAre("WARN Failed to open fts stream. ."));
}

TEST_F(OwnerTest, AMissingPathIsAnEntryThatCannotBeChanged) {
  EXPECT_TRUE(utilChown(folder / "missing"));
  EXPECT_THAT(logged(), ElementsAre(couldNotChange(folder / "missing", "(2) error msg(No such file or directory)")));
}

TEST_F(OwnerTest, EveryFailingEntryIsNamedFoldersTwice) {
  makeFolder(folder / "t");
  support::writeFile(folder / "t/file", "");
  support::Child powerless([&] {
    if (!asRoot()) return utilChown(folder / "t/") ? 0 : 1;
    giveToSomebody(folder / "t");
    giveToSomebody(folder / "t/file");
    if (::chmod((folder / "t").c_str(), 0755) != 0) return 2;
    return support::giveUpPowers() && utilChown(folder / "t/") ? 0 : 3;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(logged(),
              ElementsAre(couldNotChange(folder / "t/", notPermitted), couldNotChange(folder / "t/file", notPermitted),
                          couldNotChange(folder / "t/", notPermitted)));
}

TEST_F(OwnerTest, TheWholeTreeGoesToTheSuperUser) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user gives files away";
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/file", "");
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/file", "");
  makeLink("../outside", folder / "t/link");
  for (const char* path : {"outside", "outside/file", "t", "t/a", "t/a/file", "t/link"})
    giveToSomebody(folder / path);
  EXPECT_TRUE(utilChown(folder / "t"));
  for (const char* path : {"t", "t/a", "t/a/file", "t/link"})
    EXPECT_EQ(ownerOf(folder / path), 0u) << path;
  for (const char* path : {"outside", "outside/file"})
    EXPECT_EQ(ownerOf(folder / path), 4711u) << path;
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(OwnerTest, ALinkIsChangedItself) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user gives files away";
  makeFolder(folder / "t");
  makeLink("t", folder / "link");
  giveToSomebody(folder / "t");
  giveToSomebody(folder / "link");
  EXPECT_TRUE(utilChown(folder / "link"));
  EXPECT_EQ(ownerOf(folder / "link"), 0u);
  EXPECT_EQ(ownerOf(folder / "t"), 4711u);
}

TEST_F(OwnerTest, AMountPointIsChangedAndWhatIsBelowItNot) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user gives files away";
  makeFolder(folder / "t");
  makeFolder(folder / "t/mount");
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(folder / "t/mount", 1 << 20)) return support::kImpossible;
    support::writeFile(folder / "t/mount/file", "");
    giveToSomebody(folder / "t/mount");
    giveToSomebody(folder / "t/mount/file");
    if (!utilChown(folder / "t")) return 1;
    return ownerOf(folder / "t/mount") == 0 && ownerOf(folder / "t/mount/file") == 4711 ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(OwnerTest, NobodyLeadsItOutOfTheTreeBySwappingAFolderAndALink) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user gives files away";
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/file", "");
  giveToSomebody(folder / "outside");
  giveToSomebody(folder / "outside/file");
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/file", "");
  makeLink("../outside", folder / "t/b");
  const support::Swapper swapper(folder / "t/a", folder / "t/b");
  for (int round = 0; round < 20000; ++round)
    ASSERT_TRUE(utilChown(folder / "t"));
  EXPECT_EQ(ownerOf(folder / "outside"), 4711u);
  EXPECT_EQ(ownerOf(folder / "outside/file"), 4711u);
}

using SubFolderTest = FilesTest;

TEST_F(SubFolderTest, ListsFoldersHiddenOnesToo) {
  makeFolder(folder / "a");
  makeFolder(folder / "a/inside");
  makeFolder(folder / ".c");
  support::writeFile(folder / "b.txt", "");
  std::vector<std::string> names{"former"};
  EXPECT_TRUE(utilGetSubFolderList(folder.path(), names));
  ASSERT_EQ(names.size(), 3u);
  EXPECT_EQ(names[0], "former");
  EXPECT_THAT(names, UnorderedElementsAre("former", "a", ".c"));
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

TEST_F(SubFolderTest, AFolderWithoutFoldersIsNoFailure) {
  support::writeFile(folder / "file", "");
  std::vector<std::string> names;
  EXPECT_TRUE(utilGetSubFolderList(folder.path(), names));
  EXPECT_THAT(names, IsEmpty());
}

TEST_F(SubFolderTest, ItsPathMayBeOneOfTheNames) {
  for (int i = 0; i < 20; ++i)
    makeFolder(folder / std::to_string(i));
  std::vector<std::string> names{folder.path()};
  names.shrink_to_fit();
  EXPECT_TRUE(utilGetSubFolderList(names[0], names));
  EXPECT_EQ(names.size(), 21u);
  EXPECT_EQ(names[0], folder.path());
}

TEST_F(SubFolderTest, APathEndsAtItsFirstNul) {
  using namespace std::string_literals;
  makeFolder(folder / "a");
  std::vector<std::string> names;
  EXPECT_TRUE(utilGetSubFolderList(folder.path() + "\0"s, names));
  EXPECT_THAT(names, ElementsAre("a"));
}

TEST_F(SubFolderTest, NeedsAFolder) {
  support::writeFile(folder / "file", "");
  std::vector<std::string> names{"former"};
  EXPECT_FALSE(utilGetSubFolderList(folder / "file", names));
  EXPECT_FALSE(utilGetSubFolderList(folder / "missing", names));
  EXPECT_THAT(names, ElementsAre("former"));
}

using DisplayNameTest = FilesTest;

TEST_F(DisplayNameTest, IsAnsweredOnlyForWhatIsNotThere) {
  std::string name = "former";
  EXPECT_FALSE(utilGetDisplayNameForFolderPath("", name));
  EXPECT_FALSE(utilGetDisplayNameForFolderPath(folder.path(), name));
  EXPECT_EQ(name, "former");
  EXPECT_FALSE(utilGetDisplayNameForFolderPath(std::string(1, '\0'), name));
  EXPECT_TRUE(utilGetDisplayNameForFolderPath(folder / "missing", name));
  EXPECT_EQ(name, "");
  EXPECT_THAT(logged(), IsEmpty());
}

}  // namespace
