// Tests of system calls whose effect cannot be observed afterward. This program replaces `readdir`, `fsync` and
// `fchmod`.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/AtomicFile.h"
#include "platform/FileCopy.h"
#include "platform/FileTree.h"
#include "platform/TreeRemoval.h"
#include "tests/support/Files.h"

namespace {

bool omitsKinds = false;
std::vector<off_t> flushedSizes;   // of files
std::vector<mode_t> initialModes;  // of files whose mode is changed

}  // namespace

extern "C" struct dirent* readdir(DIR* folder) {
  using Readdir = struct dirent* (*)(DIR*);
  static const auto original = reinterpret_cast<Readdir>(::dlsym(RTLD_NEXT, "readdir"));
  struct dirent* const entry = original(folder);
  if (entry != nullptr && omitsKinds) entry->d_type = DT_UNKNOWN;
  return entry;
}

extern "C" int fsync(int fd) {
  struct stat object {};
  if (::fstat(fd, &object) == 0) flushedSizes.push_back(object.st_size);
  return static_cast<int>(::syscall(SYS_fsync, fd));
}

extern "C" int fchmod(int fd, mode_t mode) noexcept {
  struct stat object {};
  if (::fstat(fd, &object) == 0) initialModes.push_back(object.st_mode & 07777);
  return static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

namespace {

using platform::EntryKind;
using testing::ElementsAre;

class FileCallsTest : public testing::Test {
 protected:
  FileCallsTest() {
    flushedSizes.clear();
    initialModes.clear();
    ::umask(0);
  }
  ~FileCallsTest() override {
    omitsKinds = false;
    ::umask(022);
  }

  const support::TemporaryFolder folder;
};

TEST_F(FileCallsTest, FlushesAFileBeforeTheRename) {
  ASSERT_TRUE(platform::writeFileAtomically(folder / "file", "bytes"));
  EXPECT_THAT(flushedSizes, ElementsAre(5));
}

TEST_F(FileCallsTest, HidesAReplacementFromOtherUsers) {
  support::writeFile(folder / "file", "old");
  ASSERT_EQ(::chmod((folder / "file").c_str(), 0400), 0);
  ASSERT_TRUE(platform::writeFileAtomically(folder / "file", "new"));
  EXPECT_THAT(initialModes, ElementsAre(0600u));
}

TEST_F(FileCallsTest, HidesAnIncompleteCopyFromOtherUsers) {
  support::writeFile(folder / "from", "text");
  EXPECT_EQ(platform::copyFile(folder / "from", folder / "to"), std::nullopt);
  EXPECT_THAT(initialModes, ElementsAre(0600u));
}

TEST_F(FileCallsTest, FindsKindsThatTheFileSystemOmits) {
  ASSERT_EQ(::mkdir((folder / "a").c_str(), 0700), 0);
  ASSERT_EQ(::mkdir((folder / "a/b").c_str(), 0700), 0);
  ASSERT_EQ(::symlink("a", (folder / "link").c_str()), 0);
  support::writeFile(folder / "file", "");
  omitsKinds = true;
  std::vector<std::pair<std::string, EntryKind>> entries;
  for (const platform::FolderEntry& entry : platform::entriesOf(folder.path()))
    entries.emplace_back(entry.name, entry.kind);
  EXPECT_THAT(entries,
              testing::UnorderedElementsAre(std::pair("a", EntryKind::kFolder), std::pair("link", EntryKind::kLink),
                                            std::pair("file", EntryKind::kOther)));
  EXPECT_EQ(platform::removeTree(folder / "a"), std::nullopt);
}

}  // namespace
