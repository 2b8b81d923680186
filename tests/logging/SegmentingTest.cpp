#include "logging/Segmenting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/logging/FileTargetFixture.h"
#include "tests/support/Child.h"
#include "tests/support/FakeClock.h"
#include "tests/support/Mounts.h"

namespace {

bool openingFails = false;
bool emptyingFails = false;

}  // namespace

// These replace functions of the C library.

extern "C" int openat(int folder, const char* path, int flags, ...) {
  va_list mode;
  va_start(mode, flags);
  const int result =
      openingFails ? -1 : static_cast<int>(::syscall(SYS_openat, folder, path, flags, va_arg(mode, mode_t)));
  va_end(mode);
  if (openingFails) errno = EMFILE;
  return result;
}

extern "C" int ftruncate(int fd, off_t size) noexcept {
  if (!emptyingFails || size != 0) return static_cast<int>(::syscall(SYS_ftruncate, fd, size));
  errno = EPERM;
  return -1;
}

namespace {

using testing::ElementsAre;

constexpr std::size_t kMaxLogSize = 10485760;
constexpr unsigned long long kHour = 3600 * 1000;

class SegmentingTest : public FileTargetTest {
 protected:
  ~SegmentingTest() override { target.onUnregisterTarget(); }

  void grow(std::size_t size) {
    std::string contents;
    while (contents.size() < size)
      contents += "line " + std::to_string(contents.size()) + "\n";
    contents.resize(size - 1);
    support::writeFile(file, contents + "\n");
  }

  std::vector<std::string> archives() const {
    std::vector<std::string> names = support::namesIn(folder.path());
    names.erase(std::remove(names.begin(), names.end(), "Kelvo.log"), names.end());
    return names;
  }
};

TEST_F(SegmentingTest, FileBelowTenMebibytesIsNotRotated) {
  grow(kMaxLogSize - 1);
  target.onRegisterTarget();
  EXPECT_TRUE(archives().empty());
  EXPECT_EQ(std::filesystem::file_size(file), kMaxLogSize - 1);
}

TEST_F(SegmentingTest, RegistrationRotatesTenMebibytes) {
  grow(kMaxLogSize);
  const std::string previous = support::contentsOf(file);
  target.onRegisterTarget();
  ASSERT_EQ(archives().size(), 1u);
  EXPECT_EQ(std::filesystem::file_size(file), 0u);
  EXPECT_TRUE(support::contentsOf(folder / archives()[0]) == previous);
}

TEST_F(SegmentingTest, ArchiveNameHasTheTime) {
  const support::FakeLocalTime now;
  grow(kMaxLogSize);
  target.onRegisterTarget();
  EXPECT_THAT(archives(), ElementsAre("Kelvo " + now.stamp + ".log"));
}

TEST_F(SegmentingTest, SecondRotationInASecondReplacesTheArchive) {
  const support::FakeLocalTime now;
  grow(kMaxLogSize);
  target.onRegisterTarget();
  support::writeFile(file, std::string(kMaxLogSize, '2'));
  EXPECT_TRUE(target.SegmentLogFile(true));
  ASSERT_THAT(archives(), ElementsAre("Kelvo " + now.stamp + ".log"));
  EXPECT_EQ(support::contentsOf(folder / archives()[0]).front(), '2');
}

TEST_F(SegmentingTest, OlderArchiveIsNotReplaced) {
  const support::FakeLocalTime now;
  const std::string older = folder / ("Kelvo " + now.stamp + ".log");
  support::writeFile(older, "older");
  grow(kMaxLogSize);
  target.onRegisterTarget();
  EXPECT_EQ(support::contentsOf(older), "older");
  EXPECT_EQ(std::filesystem::file_size(file), kMaxLogSize);

  ++support::fakeTimeOfDay->tv_sec;
  EXPECT_TRUE(target.SegmentLogFile(true));
  EXPECT_EQ(support::contentsOf(older), "older");
  EXPECT_EQ(archives().size(), 2u);
  EXPECT_EQ(std::filesystem::file_size(file), 0u);
}

// At the end of the summer time the local time of an hour is repeated.
TEST_F(SegmentingTest, ArchiveOfTheHourBeforeIsNotReplaced) {
  const support::TimeZone berlin("CET-1CEST,M3.5.0,M10.5.0/3");
  support::fakeTimeOfDay = timeval{1414283400, 0};  // 26 October 2014, 02:30:00 in summer time
  grow(kMaxLogSize);
  target.onRegisterTarget();
  support::fakeTimeOfDay->tv_sec += 3600;
  grow(kMaxLogSize);
  target.SegmentLogFile(true);
  support::fakeTimeOfDay.reset();
  EXPECT_EQ(archives().size(), 1u);
  EXPECT_EQ(std::filesystem::file_size(file), kMaxLogSize);
}

TEST_F(SegmentingTest, WaitsForASecondWithoutAnArchive) {
  std::string taken = file;
  tarn::appendTimeStampToFile(taken);
  support::writeFile(taken, "older");
  grow(kMaxLogSize);
  target.onRegisterTarget();
  EXPECT_EQ(support::contentsOf(taken), "older");
  EXPECT_EQ(std::filesystem::file_size(file), 0u);
}

TEST_F(SegmentingTest, SymbolicLinkIsNotRotated) {
  grow(kMaxLogSize);
  std::filesystem::rename(file, home + "/elsewhere.log");
  std::filesystem::create_symlink(home + "/elsewhere.log", file);
  target.onRegisterTarget();
  EXPECT_TRUE(archives().empty());
  EXPECT_EQ(std::filesystem::file_size(file), kMaxLogSize);
}

TEST_F(SegmentingTest, WritingContinuesAfterRotation) {
  grow(kMaxLogSize);
  target.onRegisterTarget();
  log(tarn::INFO, "text");
  EXPECT_EQ(support::linesOf(file).size(), 1u);
  EXPECT_EQ(lastMessage(), "text");
}

TEST_F(SegmentingTest, WritingContinuesWithoutFreeDescriptors) {
  target.onRegisterTarget();
  grow(kMaxLogSize);
  openingFails = true;
  target.SegmentLogFile(true);
  log(tarn::INFO, "text");
  openingFails = false;
  EXPECT_EQ(lastMessage(), "text");
}

TEST_F(SegmentingTest, RotationKeepsTheInodeForOtherWriters) {
  std::ofstream other(file, std::ios::app);
  grow(kMaxLogSize);
  target.onRegisterTarget();
  other << "theirs\n" << std::flush;
  EXPECT_EQ(support::contentsOf(file), "theirs\n");
}

TEST_F(SegmentingTest, SizeIsNotCheckedWithinTheHour) {
  target.onRegisterTarget();
  log(tarn::INFO, "one");
  grow(kMaxLogSize);
  log(tarn::INFO, "two");
  EXPECT_TRUE(archives().empty());
}

TEST_F(SegmentingTest, PreviousLinesTimeDecidesWhenToCheck) {
  target.onRegisterTarget();
  const auto now = static_cast<unsigned long long>(std::time(nullptr)) * 1000;
  grow(kMaxLogSize);
  log(tarn::INFO, "one", now + kHour + 5000);
  EXPECT_TRUE(archives().empty());
  log(tarn::INFO, "two");
  EXPECT_EQ(archives().size(), 1u);
  EXPECT_EQ(support::linesOf(file).size(), 1u);
  EXPECT_EQ(lastMessage(), "two");
}

// The time of a check is the time of the line before the one that triggered it.
class HourlyCheckTest : public SegmentingTest {
 protected:
  HourlyCheckTest() {
    target.onRegisterTarget();
    log(tarn::INFO, "due", lastCheck);
    log(tarn::INFO, "checked", lastCheck);
  }

  const unsigned long long lastCheck = (static_cast<unsigned long long>(std::time(nullptr)) + 100000) * 1000;
};

TEST_F(HourlyCheckTest, ChecksSize3600SecondsAfterLastCheck) {
  grow(kMaxLogSize);
  log(tarn::INFO, "one", lastCheck + kHour - 1000);
  log(tarn::INFO, "two", lastCheck + kHour);
  EXPECT_TRUE(archives().empty());
  log(tarn::INFO, "three", lastCheck + kHour);
  EXPECT_EQ(archives().size(), 1u);
}

TEST_F(HourlyCheckTest, FailedCheckIsRepeatedAtNextLine) {
  log(tarn::INFO, "one", lastCheck + kHour);
  std::filesystem::remove(file);
  log(tarn::INFO, "two", lastCheck + kHour);
  grow(kMaxLogSize);
  EXPECT_TRUE(archives().empty());
  log(tarn::INFO, "three", lastCheck + kHour);
  EXPECT_EQ(archives().size(), 1u);
}

TEST_F(SegmentingTest, CheckFailsForMissingFile) {
  target.onRegisterTarget();
  std::filesystem::remove(file);
  EXPECT_FALSE(target.SegmentLogFile(true));
}

TEST_F(SegmentingTest, FailedCopyKeepsTheFile) {
  grow(kMaxLogSize);
  support::Child rotating([&] {
    const rlimit full{kMaxLogSize / 2, kMaxLogSize / 2};
    ::setrlimit(RLIMIT_FSIZE, &full);
    const bool checked = target.onRegisterTarget() && target.SegmentLogFile(true);
    target.onUnregisterTarget();
    return checked ? 0 : 1;
  });
  EXPECT_EQ(rotating.wait(), 0);
  EXPECT_TRUE(archives().empty());
  EXPECT_EQ(std::filesystem::file_size(file), kMaxLogSize);
}

TEST_F(SegmentingTest, KilledRotationLeavesNoPartOfAnArchive) {
  constexpr std::size_t kSize = 12 * kMaxLogSize;
  const support::SetRemover remover(file, 11);
  support::writeFile(file, std::string(kSize, '\n'));
  support::Child rotating([&] { return target.onRegisterTarget() ? ::pause() : 1; });
  EXPECT_TRUE(support::becomesTrue([&] { return !archives().empty(); }));
  rotating.kill();
  rotating.wait();
  for (const std::string& name : archives())
    EXPECT_TRUE(name.front() == '.' || std::filesystem::file_size(folder / name) == kSize) << name;

  grow(kMaxLogSize);
  target.onRegisterTarget();
  for (const std::string& name : archives())
    EXPECT_NE(name.front(), '.') << name;
}

TEST_F(SegmentingTest, FailedEmptyingLeavesNoArchive) {
  grow(kMaxLogSize);
  emptyingFails = true;
  EXPECT_TRUE(target.onRegisterTarget());
  emptyingFails = false;
  EXPECT_TRUE(archives().empty());
  EXPECT_EQ(std::filesystem::file_size(file), kMaxLogSize);
}

TEST_F(SegmentingTest, CleanFileKeepsTheFile) {
  support::writeFile(file, "text");
  EXPECT_TRUE(target.cleanFile());
  EXPECT_EQ(std::filesystem::file_size(file), 0u);
}

TEST_F(SegmentingTest, CleanFileFailsForAFolder) {
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  EXPECT_FALSE(target.cleanFile());
}

TEST_F(SegmentingTest, RenameLogFileStoresTheNewName) {
  support::writeFile(file, "text");
  EXPECT_EQ(target.getRenamedFilePath(), "");
  ASSERT_TRUE(target.renameLogFile());
  EXPECT_EQ(support::contentsOf(target.getRenamedFilePath()), "text");
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SegmentingTest, RenameLogFileFailsForExistingName) {
  const support::FakeLocalTime now;
  const std::string taken = folder / ("Kelvo " + now.stamp + ".log");
  support::writeFile(file, "text");
  support::writeFile(taken, "taken");
  EXPECT_FALSE(target.renameLogFile());
  EXPECT_EQ(target.getRenamedFilePath(), "");
  EXPECT_EQ(support::contentsOf(file), "text");
  EXPECT_EQ(support::contentsOf(taken), "taken");
}

TEST_F(SegmentingTest, RenameLogFileFailsForMissingFile) {
  std::filesystem::remove(file);
  EXPECT_FALSE(target.renameLogFile());
  EXPECT_EQ(target.getRenamedFilePath(), "");
}

TEST(TimeStamp, IsInsertedBeforeTheExtension) {
  const support::FakeLocalTime now;
  std::string path = "/logs/Kelvo.log";
  EXPECT_TRUE(tarn::appendTimeStampToFile(path));
  EXPECT_EQ(path, "/logs/Kelvo " + now.stamp + ".log");
}

TEST(TimeStamp, AddsADotWithoutExtension) {
  const support::FakeLocalTime now;
  std::string path = "/logs/Kelvo";
  EXPECT_TRUE(tarn::appendTimeStampToFile(path));
  EXPECT_EQ(path, "/logs/Kelvo " + now.stamp + ".");
}

TEST(ContentCopy, CopiesTheContents) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "a", std::string(8192, 'x'));
  EXPECT_TRUE(tarn::copyContentOfFileToFile(folder / "a", folder / "b"));
  EXPECT_EQ(support::contentsOf(folder / "b"), std::string(8192, 'x'));
  EXPECT_FALSE(tarn::copyContentOfFileToFile(folder / "missing", folder / "b"));
}

// Runs `body` with a file system of this size mounted on the folder. Returns `kImpossible` if the test may not mount.
int onSmallDisk(const std::string& folder, std::size_t bytes, const std::function<int()>& body) {
  return support::withOwnMounts([&] { return support::mountMemory(folder, bytes) ? body() : support::kImpossible; });
}

std::string messageOf(const std::string& line) {
  return line.substr(line.rfind(" | ") + 3);
}

TEST_F(SegmentingTest, FullDiskDropsLines) {
  const int result = onSmallDisk(folder.path(), 64 << 10, [&] {
    target.setLogFile("Kelvo.log", folder.path().c_str());
    target.onRegisterTarget();
    log(tarn::INFO, "first");
    support::writeFile(folder / "ballast", std::string(1 << 20, 'x'));
    const std::string longText(6000, 'y');
    for (int i = 0; i < 20; ++i)
      log(tarn::INFO, longText.c_str());
    std::filesystem::remove(folder / "ballast");
    log(tarn::INFO, "after");
    log(tarn::INFO, "last");
    target.onUnregisterTarget();

    const std::vector<std::string> lines = support::linesOf(file);
    const std::size_t count = lines.size();
    if (count < 3 || count > 4) return 1;
    if (messageOf(lines[0]) != "first" || messageOf(lines[count - 2]) != "after") return 2;
    return messageOf(lines[count - 1]) == "last" ? 0 : 3;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "the test may not mount a file system";
  EXPECT_EQ(result, 0);
}

TEST_F(SegmentingTest, FullDiskLeavesNoIncompleteArchive) {
  const int result = onSmallDisk(folder.path(), 14 << 20, [&] {
    grow(kMaxLogSize);
    target.setLogFile("Kelvo.log", folder.path().c_str());
    if (!target.onRegisterTarget()) return 1;
    if (!archives().empty()) return 2;
    if (std::filesystem::file_size(file) != kMaxLogSize) return 3;
    log(tarn::INFO, "after");
    target.onUnregisterTarget();
    return lastMessage() == "after" ? 0 : 4;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "the test may not mount a file system";
  EXPECT_EQ(result, 0);
}

}  // namespace
