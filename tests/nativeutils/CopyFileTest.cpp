#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "nativeutils/Files.h"
#include "tests/nativeutils/FileSystemTest.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Trees.h"

namespace {

using support::makeFolder;
using support::makeLink;
using support::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;

class CopyFileTest : public nativeutils_test::FileSystemTest {
 protected:
  CopyFileTest() {
    makeFolder(folder / "x");
    makeFolder(folder / "y");
    support::writeFile(folder / "x/f.txt", "new");
  }

  bool copy() const { return utilCopySrcFileToDstFolder(folder / "x/f.txt", folder / "y", false); }

  std::string couldNotCopy(const std::string& why, const std::string& from, const std::string& to) const {
    return "FATAL Error Failed to copy. Error(" + why + "). Src file (" + from + ") to dst file(" + to + ").";
  }
};

TEST_F(CopyFileTest, ReplacesTheFileInTheFolder) {
  support::writeFile(folder / "y/f.txt", "old and longer");
  EXPECT_TRUE(copy());
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "new");
  EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(CopyFileTest, ReplacesALinkAndKeepsItsTarget) {
  support::writeFile(folder / "precious", "old");
  makeLink("../precious", folder / "y/f.txt");
  EXPECT_TRUE(copy());
  EXPECT_EQ(support::contentsOf(folder / "precious"), "old");
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "new");
}

TEST_F(CopyFileTest, ReplacesAHardLinkToTheSource) {
  ASSERT_EQ(::link((folder / "x/f.txt").c_str(), (folder / "y/f.txt").c_str()), 0);
  EXPECT_TRUE(copy());
  support::writeFile(folder / "y/f.txt", "changed");
  EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
}

TEST_F(CopyFileTest, NeedsAFile) {
  for (const std::string& source : {folder / "missing", folder / "x"})
    EXPECT_FALSE(utilCopySrcFileToDstFolder(source, folder / "y", false));
  EXPECT_THAT(logged(), ElementsAre("FATAL Error Src file (" + folder / "missing" + ") does not exits.",
                                    "FATAL Error Src file (" + folder / "x" + ") does not exits."));
}

TEST_F(CopyFileTest, NeedsAFolder) {
  for (const std::string& target : {folder / "missing", folder / "x/f.txt"})
    EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/f.txt", target, false));
  const std::string end = ") ... either dst does not exits or not a folder.";
  EXPECT_THAT(logged(), ElementsAre("FATAL Error Failed to copy src file to dst (" + folder / "missing" + end,
                                    "FATAL Error Failed to copy src file to dst (" + folder / "x/f.txt" + end));
}

TEST_F(CopyFileTest, DoesNotReplaceAFolder) {
  makeFolder(folder / "y/f.txt");
  EXPECT_FALSE(copy());
  EXPECT_THAT(logged(),
              ElementsAre(couldNotCopy("File exists: " + folder / "y/f.txt", folder / "x/f.txt", folder / "y/f.txt")));
}

TEST_F(CopyFileTest, LogsAnExistingFileThatCannotBeDeleted) {
  support::writeFile(folder / "y/f.txt", "old");
  ASSERT_EQ(::chmod((folder / "y").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !copy(); }));
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "old");
  EXPECT_THAT(logged(), ElementsAre("FATAL Error in utilDeleteFileIfExitsAtPath " + folder / "y/f.txt" +
                                        ". error Permission denied: " + folder / "y/f.txt",
                                    "FATAL unable to delete dst file (" + folder / "y/f.txt" + ")."));
}

TEST_F(CopyFileTest, KeepsAFileCopiedOverItself) {
  makeLink("x", folder / "also x");
  for (const std::string& target : {folder / "x", folder / "x/", folder / "also x"}) {
    EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/f.txt", target, false));
    EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
  }
  ASSERT_EQ(logged().size(), 3u);
  EXPECT_EQ(logged()[0], couldNotCopy("File exists: " + folder / "x/f.txt", folder / "x/f.txt", folder / "x/f.txt"));
}

TEST_F(CopyFileTest, KeepsTheTargetOfTheCopiedLink) {
  support::writeFile(folder / "y/f.txt", "precious");
  ASSERT_EQ(::unlink((folder / "x/f.txt").c_str()), 0);
  makeLink("../y/f.txt", folder / "x/f.txt");
  EXPECT_FALSE(copy());
  EXPECT_EQ(support::contentsOf(folder / "y/f.txt"), "precious");
}

TEST_F(CopyFileTest, KeepsTheTargetOfAnIndirectLink) {
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

TEST_F(CopyFileTest, EndsPathsAtTheFirstNul) {
  using namespace std::string_literals;
  EXPECT_TRUE(utilCopySrcFileToDstFolder(folder / "x/f.txt\0/other"s, folder / "y\0/z"s, false));
  EXPECT_THAT(namesIn(folder / "y"), ElementsAre("f.txt"));
  EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/f.txt\0"s, folder / "x\0"s, false));
  EXPECT_EQ(support::contentsOf(folder / "x/f.txt"), "new");
}

TEST_F(CopyFileTest, DoesNotWaitForAPipe) {
  ASSERT_EQ(::mkfifo((folder / "x/pipe").c_str(), 0600), 0);
  EXPECT_FALSE(utilCopySrcFileToDstFolder(folder / "x/pipe", folder / "y", false));
  EXPECT_THAT(logged(), ElementsAre(couldNotCopy("Operation not supported: " + folder / "x/pipe", folder / "x/pipe",
                                                 folder / "y/pipe")));
}

TEST_F(CopyFileTest, RemovesAnIncompleteCopyOnAFullDisk) {
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

}  // namespace
