#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/FileCopy.h"
#include "platform/FileKind.h"
#include "platform/UniqueFd.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Interruptions.h"
#include "tests/support/Mounts.h"

namespace {

struct stat statusOf(const std::string& path) {
  struct stat object {};
  EXPECT_EQ(::lstat(path.c_str(), &object), 0) << path;
  return object;
}

bool isSameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

std::string attributeOf(const std::string& path, const char* name) {
  char value[100] = {};
  const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
  return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
}

class AttributeCopyTest : public testing::Test {
 protected:
  AttributeCopyTest() { support::writeFile(from, "text"); }

  // "" on success.
  std::string copied() const { return platform::copyFile(from, to).value_or(""); }

  const support::TemporaryFolder folder;
  const std::string from = folder / "from";
  const std::string to = folder / "to";
};

TEST_F(AttributeCopyTest, KeepsBytesModeAndTimes) {
  ASSERT_EQ(::chmod(from.c_str(), 04751), 0);
  const timespec times[] = {{1000000001, 123456789}, {1000000002, 987654321}};
  ASSERT_EQ(::utimensat(AT_FDCWD, from.c_str(), times, 0), 0);
  const mode_t previous = ::umask(077);
  EXPECT_EQ(copied(), "");
  ::umask(previous);
  EXPECT_EQ(support::modeOf(to), 04751u);
  EXPECT_TRUE(isSameTime(statusOf(to).st_atim, times[0]));
  EXPECT_TRUE(isSameTime(statusOf(to).st_mtim, times[1]));
  EXPECT_EQ(support::contentsOf(to), "text");
}

TEST_F(AttributeCopyTest, KeepsExtendedAttributes) {
  if (::setxattr(from.c_str(), "user.color", "green", 5, 0) != 0) GTEST_SKIP() << "no extended attributes here";
  ASSERT_EQ(::setxattr(from.c_str(), "user.empty", "", 0, 0), 0);
  EXPECT_EQ(copied(), "");
  EXPECT_EQ(attributeOf(to, "user.color"), "green");
  EXPECT_EQ(attributeOf(to, "user.empty"), "");
}

TEST_F(AttributeCopyTest, KeepsTheAccessList) {
  // A list of version 2: user::rw-, user 4711 r--, group::r--, mask::r--, other::---.
  const unsigned char list[] = {2, 0,    0,    0,    0x01, 0,    6,    0, 0xff, 0xff, 0xff, 0xff, 0x02, 0,    4,
                                0, 0x67, 0x12, 0,    0,    4,    0,    4, 0,    0xff, 0xff, 0xff, 0xff, 0x10, 0,
                                4, 0,    0xff, 0xff, 0xff, 0xff, 0x20, 0, 0,    0,    0xff, 0xff, 0xff, 0xff};
  if (::setxattr(from.c_str(), "system.posix_acl_access", list, sizeof list, 0) != 0)
    GTEST_SKIP() << "no access lists here";
  EXPECT_EQ(copied(), "");
  EXPECT_EQ(attributeOf(to, "system.posix_acl_access"), attributeOf(from, "system.posix_acl_access"));
  EXPECT_EQ(support::modeOf(to), support::modeOf(from));
}

TEST_F(AttributeCopyTest, KeepsOwnerAndGroupForTheSuperUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change owners";
  ASSERT_EQ(::chown(from.c_str(), 4711, 4712), 0);
  ASSERT_EQ(::chmod(from.c_str(), 06755), 0);
  EXPECT_EQ(copied(), "");
  EXPECT_EQ(statusOf(to).st_uid, 4711u);
  EXPECT_EQ(statusOf(to).st_gid, 4712u);
  EXPECT_EQ(support::modeOf(to), 06755u);
}

TEST_F(AttributeCopyTest, ClearsTheSpecialBitsWithoutTheOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change owners";
  ASSERT_EQ(::chown(from.c_str(), 4711, 4712), 0);
  ASSERT_EQ(::chmod(from.c_str(), 06755), 0);
  support::Child powerless([&] {
    if (!support::dropCapabilities()) return 1;
    return copied().empty() ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_EQ(statusOf(to).st_uid, 0u);
  EXPECT_EQ(support::modeOf(to), 0755u);
}

TEST_F(AttributeCopyTest, KeepsTheHolesOfAFile) {
  constexpr off_t size = 64 << 20;
  const std::string middle = "somewhere in the middle";
  const platform::UniqueFd fd(::open(from.c_str(), O_WRONLY | O_TRUNC));
  ASSERT_EQ(::pwrite(fd.get(), middle.data(), middle.size(), size / 2), static_cast<ssize_t>(middle.size()));
  ASSERT_EQ(::ftruncate(fd.get(), size), 0);
  EXPECT_EQ(copied(), "");
  EXPECT_EQ(statusOf(to).st_size, size);
  EXPECT_LT(statusOf(to).st_blocks * 512, 1 << 20);
  EXPECT_EQ(support::contentsOf(to), support::contentsOf(from));
}

TEST_F(AttributeCopyTest, CopiesAFileWithoutData) {
  ASSERT_EQ(::truncate(from.c_str(), 0), 0);
  ASSERT_EQ(::truncate(from.c_str(), 1 << 20), 0);
  EXPECT_EQ(copied(), "");
  EXPECT_EQ(statusOf(to).st_size, 1 << 20);
}

TEST_F(AttributeCopyTest, CopiesAnEmptyFile) {
  ASSERT_EQ(::truncate(from.c_str(), 0), 0);
  EXPECT_EQ(copied(), "");
  EXPECT_EQ(statusOf(to).st_size, 0);
}

TEST_F(AttributeCopyTest, CopiesAFileOfUnknownSize) {
  EXPECT_EQ(platform::copyFile("/proc/self/status", to), std::nullopt);
  EXPECT_NE(support::contentsOf(to).find("Name:"), std::string::npos);
}

TEST_F(AttributeCopyTest, RemovesTheCopyAfterAReadError) {
  EXPECT_EQ(platform::copyFile("/proc/self/mem", to), "Input/output error: " + to);
  EXPECT_FALSE(platform::exists(to));
  EXPECT_FALSE(platform::copyFileContents("/proc/self/mem", to));
  EXPECT_FALSE(platform::exists(to));
}

TEST_F(AttributeCopyTest, OmitsBytesAppendedDuringTheCopy) {
  const std::string bytes(300000, 'x');
  support::writeFile(from, bytes);
  ASSERT_EQ(::mkfifo(to.c_str(), 0600), 0);
  support::Child copier([&] { return platform::copyFileContents(from, to) ? 0 : 1; });
  std::ifstream pipe(to, std::ios::binary);
  std::string read(1, '\0');
  ASSERT_TRUE(pipe.get(read[0]));  // the copier has read the size
  support::writeFile(from, bytes + std::string(300000, 'y'));
  read.append(std::istreambuf_iterator<char>(pipe), {});
  EXPECT_EQ(copier.wait(), 0);
  EXPECT_TRUE(read == bytes) << read.size();
}

TEST_F(AttributeCopyTest, CopiesToAnotherFileSystem) {
  std::string bytes(3000001, 'x');
  bytes[2000000] = 'y';
  support::writeFile(from, bytes);
  const int status = support::withOwnMounts([&] {
    if (::mkdir((folder / "mount").c_str(), 0700) != 0) return 1;
    if (!support::mountMemory(folder / "mount", 8 << 20)) return support::kImpossible;
    if (platform::copyFile(from, folder / "mount/to")) return 2;
    return support::contentsOf(folder / "mount/to") == bytes ? 0 : 3;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(AttributeCopyTest, RemovesTheCopyOnAFullDisk) {
  support::writeFile(from, std::string(3000000, 'x'));
  const int status = support::withOwnMounts([&] {
    if (::mkdir((folder / "mount").c_str(), 0700) != 0) return 1;
    if (!support::mountMemory(folder / "mount", 1 << 20)) return support::kImpossible;
    if (platform::copyFile(from, folder / "mount/to") != "No space left on device: " + folder / "mount/to") return 2;
    return support::namesIn(folder / "mount").empty() ? 0 : 3;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(AttributeCopyTest, RemovesTheCopyAtTheFileSizeLimit) {
  support::writeFile(from, std::string(300000, 'x'));
  support::Child limited([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{150000, 150000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return copied() == "File too large: " + to ? 0 : 1;
  });
  EXPECT_EQ(limited.wait(), 0);
  EXPECT_FALSE(platform::exists(to));
}

TEST_F(AttributeCopyTest, CopiesALinkAsALink) {
  const std::string text = "no such\nthing/" + std::string(3000, 'x');
  ASSERT_EQ(::symlink(text.c_str(), (folder / "link").c_str()), 0);
  const timespec times[] = {{1000000001, 1}, {1000000002, 2}};
  ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "link").c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  EXPECT_EQ(platform::copyFile(folder / "link", to), std::nullopt);
  EXPECT_EQ(std::filesystem::read_symlink(to), text);
  EXPECT_TRUE(isSameTime(statusOf(to).st_mtim, times[1]));
}

TEST_F(AttributeCopyTest, KeepsAnExistingFile) {
  support::writeFile(to, "old");
  EXPECT_EQ(copied(), "File exists: " + to);
  EXPECT_EQ(support::contentsOf(to), "old");
  ASSERT_EQ(::symlink("nowhere", (folder / "dangling").c_str()), 0);
  EXPECT_EQ(platform::copyFile(from, folder / "dangling"), "File exists: " + folder / "dangling");
  EXPECT_FALSE(platform::exists(folder / "nowhere"));
}

TEST_F(AttributeCopyTest, FailsForAnUnreadableFile) {
  ASSERT_EQ(::chmod(from.c_str(), 0), 0);
  support::Child powerless([&] {
    if (!support::dropCapabilities()) return 1;
    return copied() == "Permission denied: " + from ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_FALSE(platform::exists(to));
}

TEST_F(AttributeCopyTest, RefusesSpecialFilesWithoutWaiting) {
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  const platform::UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM, 0));
  support::Child binding([&] {
    if (::chdir(folder.path().c_str()) != 0) return 1;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "socket");
    return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : 2;
  });
  ASSERT_EQ(binding.wait(), 0);
  for (const std::string& special : {folder / "pipe", folder / "socket", std::string("/dev/null"), folder.path()})
    EXPECT_EQ(platform::copyFile(special, to), "Operation not supported: " + special);
  EXPECT_FALSE(platform::exists(to));
}

TEST_F(AttributeCopyTest, NamesTheMissingPath) {
  EXPECT_EQ(platform::copyFile(folder / "missing", to), "No such file or directory: " + folder / "missing");
  EXPECT_EQ(platform::copyFile(from, folder / "missing/to"), "No such file or directory: " + folder / "missing/to");
}

TEST_F(AttributeCopyTest, CopiesEveryByteDespiteSignals) {
  std::string bytes(60000000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<char>(i * 7 + i / 251);
  support::writeFile(from, bytes);
  {
    const support::Interruptions interruptions;
    EXPECT_EQ(copied(), "");
  }
  EXPECT_TRUE(support::contentsOf(to) == bytes);
}

}  // namespace
