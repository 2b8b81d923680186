#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <utility>

#include "platform/FileCopy.h"
#include "platform/PathLock.h"
#include "platform/UniqueFd.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using platform::PathLock;
using platform::UniqueFd;

bool isOpen(int fd) {
  return ::fcntl(fd, F_GETFD) != -1;
}

TEST(UniqueFdTest, ClosesItsDescriptorOnce) {
  int number = -1;
  {
    UniqueFd first(::open("/dev/null", O_RDONLY));
    number = first.get();
    const UniqueFd second(std::move(first));
    EXPECT_FALSE(first);
    EXPECT_EQ(second.get(), number);
    EXPECT_TRUE(isOpen(number));
  }
  EXPECT_FALSE(isOpen(number));
}

TEST(UniqueFdTest, ClosesTheDescriptorThatItReplaces) {
  UniqueFd fd(::open("/dev/null", O_RDONLY));
  const int previous = fd.get();
  fd = UniqueFd(::open("/dev/zero", O_RDONLY));
  EXPECT_FALSE(isOpen(previous) && previous != fd.get());
  EXPECT_TRUE(fd);
}

bool isLocked(const std::string& path) {
  const UniqueFd fd(::open(path.c_str(), O_RDONLY));
  return ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0;
}

TEST(PathLockTest, IsHeldUntilTheEndOfTheScope) {
  const support::TemporaryFolder folder;
  {
    const PathLock lock(folder.path());
    EXPECT_TRUE(isLocked(folder.path()));
  }
  EXPECT_FALSE(isLocked(folder.path()));
}

TEST(PathLockTest, IsReleasedByAKilledHolder) {
  const support::TemporaryFolder folder;
  support::Child holder([&] {
    const PathLock lock(folder.path());
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return isLocked(folder.path()); }));
  holder.kill();
  holder.wait();
  EXPECT_FALSE(isLocked(folder.path()));
}

TEST(PathLockTest, StopsWaitingForALockThatRemainsHeld) {
  const support::TemporaryFolder folder;
  const PathLock held(folder.path());
  const auto before = std::chrono::steady_clock::now();
  { const PathLock lock(folder.path()); }
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
}

TEST(PathLockTest, IgnoresAMissingPath) {
  const support::TemporaryFolder folder;
  const PathLock missing(folder / "missing");
}

TEST(PathLockTest, DoesNotWaitForAPipe) {
  const support::TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  const PathLock pipe(folder / "pipe");
}

TEST(FileContentsTest, CopiesEveryByte) {
  const support::TemporaryFolder folder;
  std::string bytes(1000003, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<char>(i * 7 + i / 251);
  support::writeFile(folder / "from", bytes);
  EXPECT_TRUE(platform::copyFileContents(folder / "from", folder / "to"));
  EXPECT_EQ(support::contentsOf(folder / "to"), bytes);
}

TEST(FileContentsTest, ReplacesTheContents) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "from", "new");
  support::writeFile(folder / "to", "old and longer");
  EXPECT_TRUE(platform::copyFileContents(folder / "from", folder / "to"));
  EXPECT_EQ(support::contentsOf(folder / "to"), "new");
}

TEST(FileContentsTest, KeepsAFileCopiedOverItself) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "from", "text");
  ASSERT_EQ(::link((folder / "from").c_str(), (folder / "hard").c_str()), 0);
  ASSERT_EQ(::symlink("from", (folder / "soft").c_str()), 0);
  for (const char* to : {"from", "hard", "soft"}) {
    EXPECT_FALSE(platform::copyFileContents(folder / "from", folder / to)) << to;
    EXPECT_EQ(support::contentsOf(folder / to), "text") << to;
  }
}

TEST(FileContentsTest, WritesToADevice) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "from", "text");
  EXPECT_TRUE(platform::copyFileContents(folder / "from", "/dev/null"));
}

TEST(FileContentsTest, KeepsTheTargetWithoutASource) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "to", "old");
  EXPECT_FALSE(platform::copyFileContents(folder / "missing", folder / "to"));
  EXPECT_EQ(support::contentsOf(folder / "to"), "old");
}

TEST(FileContentsTest, FailsWithoutAFolder) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "from", "text");
  EXPECT_FALSE(platform::copyFileContents(folder / "from", folder / "missing/to"));
}

// Copies 300,000 bytes where the limit is 150,000.
void failHalfway(const support::TemporaryFolder& folder, const std::string& to) {
  support::writeFile(folder / "from", std::string(300000, 'x'));
  const int copied = support::inChild([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{150000, 150000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return platform::copyFileContents(folder / "from", to) ? 1 : 0;
  });
  EXPECT_EQ(copied, 0);
}

TEST(FileContentsTest, RemovesAnIncompleteCopy) {
  const support::TemporaryFolder folder;
  failHalfway(folder, folder / "to");
  EXPECT_FALSE(std::filesystem::exists(folder / "to"));
}

TEST(FileContentsTest, EmptiesAnExistingFileAfterAFailure) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "to", "old");
  ASSERT_EQ(::symlink("to", (folder / "link").c_str()), 0);
  failHalfway(folder, folder / "link");
  EXPECT_EQ(support::namesIn(folder.path()), (std::vector<std::string>{"from", "link", "to"}));
  EXPECT_EQ(support::contentsOf(folder / "to"), "");
}

TEST(FileContentsTest, KeepsALinkToAFullDevice) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "from", "text");
  ASSERT_EQ(::symlink("/dev/full", (folder / "link").c_str()), 0);
  EXPECT_FALSE(platform::copyFileContents(folder / "from", folder / "link"));
  EXPECT_EQ(std::filesystem::read_symlink(folder / "link"), "/dev/full");
}

TEST(FileContentsTest, KeepsAFullDevice) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "from", "text");
  const dev_t full = makedev(1, 7);
  if (::mknod((folder / "full").c_str(), S_IFCHR | 0600, full) != 0) GTEST_SKIP() << "devices cannot be created here";
  if (::access("/dev/full", W_OK) != 0 || !platform::UniqueFd(::open((folder / "full").c_str(), O_WRONLY | O_CLOEXEC)))
    GTEST_SKIP() << "devices cannot be opened here";
  EXPECT_FALSE(platform::copyFileContents(folder / "from", folder / "full"));
  EXPECT_TRUE(std::filesystem::is_character_file(folder / "full"));
}

}  // namespace
