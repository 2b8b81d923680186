// What the system is asked for when files are written and folders read, of which nothing is to be seen afterwards. This
// program stands between the library and the calls.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/AtomicFile.h"
#include "platform/FileCopy.h"
#include "platform/FileTree.h"
#include "platform/TreeRemoval.h"
#include "tests/support/Files.h"

namespace {

bool kindsAreUnknown = false;
std::function<void()> beforeRemoval;      // of the next object
std::vector<off_t> broughtToDisk;         // the sizes
std::vector<mode_t> modesBeforeTheirOwn;  // of files that get another mode

}  // namespace

extern "C" struct dirent* readdir(DIR* folder) {
  using Readdir = struct dirent* (*)(DIR*);
  static const auto original = reinterpret_cast<Readdir>(::dlsym(RTLD_NEXT, "readdir"));
  struct dirent* const entry = original(folder);
  if (entry != nullptr && kindsAreUnknown) entry->d_type = DT_UNKNOWN;
  return entry;
}

// With the error that POSIX has for a folder.
extern "C" int unlinkat(int folder, const char* name, int flags) noexcept {
  if (beforeRemoval) std::exchange(beforeRemoval, nullptr)();
  const auto result = static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
  if (result != 0 && errno == EISDIR) errno = EPERM;
  return result;
}

extern "C" int fsync(int fd) {
  struct stat object {};
  if (::fstat(fd, &object) == 0) broughtToDisk.push_back(object.st_size);
  return static_cast<int>(::syscall(SYS_fsync, fd));
}

extern "C" int fchmod(int fd, mode_t mode) noexcept {
  struct stat object {};
  if (::fstat(fd, &object) == 0) modesBeforeTheirOwn.push_back(object.st_mode & 07777);
  return static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

namespace {

using platform::EntryKind;
using testing::ElementsAre;

class FileCallsTest : public testing::Test {
 protected:
  FileCallsTest() {
    broughtToDisk.clear();
    modesBeforeTheirOwn.clear();
    ::umask(0);
  }
  ~FileCallsTest() override {
    kindsAreUnknown = false;
    ::umask(022);
  }

  const support::TemporaryFolder folder;
};

TEST_F(FileCallsTest, AFileIsBroughtToTheDiskBeforeItGetsItsName) {
  ASSERT_TRUE(platform::writeFileAtomically(folder / "file", "bytes"));
  EXPECT_THAT(broughtToDisk, ElementsAre(5));
}

TEST_F(FileCallsTest, NobodyElseReadsWhatReplacesAClosedFile) {
  support::writeFile(folder / "file", "old");
  ASSERT_EQ(::chmod((folder / "file").c_str(), 0400), 0);
  ASSERT_TRUE(platform::writeFileAtomically(folder / "file", "new"));
  EXPECT_THAT(modesBeforeTheirOwn, ElementsAre(0600u));
}

TEST_F(FileCallsTest, NobodyElseReadsACopyBeforeItHasItsMode) {
  support::writeFile(folder / "from", "text");
  EXPECT_EQ(platform::copyFile(folder / "from", folder / "to"), std::nullopt);
  EXPECT_THAT(modesBeforeTheirOwn, ElementsAre(0600u));
}

TEST_F(FileCallsTest, AFileSystemNeedNotTellTheKindsOfEntries) {
  ASSERT_EQ(::mkdir((folder / "a").c_str(), 0700), 0);
  ASSERT_EQ(::mkdir((folder / "a/b").c_str(), 0700), 0);
  ASSERT_EQ(::symlink("a", (folder / "link").c_str()), 0);
  support::writeFile(folder / "file", "");
  kindsAreUnknown = true;
  std::vector<std::pair<std::string, EntryKind>> entries;
  for (const platform::FolderEntry& entry : platform::entriesOf(folder.path()))
    entries.emplace_back(entry.name, entry.kind);
  EXPECT_THAT(entries,
              testing::UnorderedElementsAre(std::pair("a", EntryKind::folder), std::pair("link", EntryKind::link),
                                            std::pair("file", EntryKind::other)));
  EXPECT_EQ(platform::removeTree(folder / "a"), std::nullopt);
}

TEST_F(FileCallsTest, AFolderThatCameInAFilesPlaceIsRemovedWhateverTheSystemCallsIt) {
  support::writeFile(folder / "file", "");
  beforeRemoval = [&] {
    ASSERT_EQ(std::rename((folder / "file").c_str(), (folder / "kept").c_str()), 0);
    ASSERT_EQ(::mkdir((folder / "file").c_str(), 0700), 0);
    support::writeFile(folder / "file/below", "");
  };
  EXPECT_EQ(platform::removeTree(folder / "file"), std::nullopt);
  EXPECT_THAT(platform::entriesOf(folder.path()), testing::SizeIs(1));
}

}  // namespace
