#include "logging/Segmenting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstddef>
#include <functional>

#include "tests/logging/FileTargetFixture.h"
#include "tests/support/Child.h"
#include "tests/support/FakeClock.h"
#include "tests/support/Mounts.h"

namespace {

using testing::ElementsAre;

constexpr std::size_t sizeToCutAt = 10485760;
constexpr unsigned long long hour = 3600 * 1000;

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

TEST_F(SegmentingTest, AFileBelowTenMebibytesIsNotCut) {
  grow(sizeToCutAt - 1);
  target.onRegisterTarget();
  EXPECT_TRUE(archives().empty());
  EXPECT_EQ(std::filesystem::file_size(file), sizeToCutAt - 1);
}

TEST_F(SegmentingTest, AFileOfTenMebibytesIsCutAtRegistration) {
  grow(sizeToCutAt);
  const std::string former = support::contentsOf(file);
  target.onRegisterTarget();
  ASSERT_EQ(archives().size(), 1u);
  EXPECT_EQ(std::filesystem::file_size(file), 0u);
  EXPECT_TRUE(support::contentsOf(folder / archives()[0]) == former);
}

TEST_F(SegmentingTest, AnArchiveIsNamedAfterTheFileAndTheTime) {
  const support::FakeLocalTime now;
  grow(sizeToCutAt);
  target.onRegisterTarget();
  EXPECT_THAT(archives(), ElementsAre("Kelvo " + now.stamp + ".log"));
}

TEST_F(SegmentingTest, ALogThatIsALinkIsNotCut) {
  grow(sizeToCutAt);
  std::filesystem::rename(file, home + "/elsewhere.log");
  std::filesystem::create_symlink(home + "/elsewhere.log", file);
  target.onRegisterTarget();
  EXPECT_TRUE(archives().empty());
  EXPECT_EQ(std::filesystem::file_size(file), sizeToCutAt);
}

TEST_F(SegmentingTest, WritingGoesOnInTheFileAfterACut) {
  grow(sizeToCutAt);
  target.onRegisterTarget();
  log(tarn::INFO, "text");
  EXPECT_EQ(support::linesOf(file).size(), 1u);
  EXPECT_EQ(lastMessage(), "text");
}

TEST_F(SegmentingTest, ACutFileIsStillTheSameToEverybodyWhoHasItOpen) {
  std::ofstream other(file, std::ios::app);
  grow(sizeToCutAt);
  target.onRegisterTarget();
  other << "theirs\n" << std::flush;
  EXPECT_EQ(support::contentsOf(file), "theirs\n");
}

TEST_F(SegmentingTest, AFileGrowsOnBetweenTheHourlyChecks) {
  target.onRegisterTarget();
  log(tarn::INFO, "one");
  grow(sizeToCutAt);
  log(tarn::INFO, "two");
  EXPECT_TRUE(archives().empty());
}

TEST_F(SegmentingTest, TheSizeIsCheckedAnHourAfterTheLastCheckByTheTimeOfTheLineBefore) {
  target.onRegisterTarget();
  const auto now = static_cast<unsigned long long>(std::time(nullptr)) * 1000;
  grow(sizeToCutAt);
  log(tarn::INFO, "one", now + hour + 5000);
  EXPECT_TRUE(archives().empty());
  log(tarn::INFO, "two");
  EXPECT_EQ(archives().size(), 1u);
  EXPECT_EQ(support::linesOf(file).size(), 1u);
  EXPECT_EQ(lastMessage(), "two");
}

// Once a line has made a check succeed, the next check is counted from the time of the line before it.
class HourlyCheckTest : public SegmentingTest {
 protected:
  HourlyCheckTest() {
    target.onRegisterTarget();
    log(tarn::INFO, "due", lastCheck);
    log(tarn::INFO, "checked", lastCheck);
  }

  const unsigned long long lastCheck = (static_cast<unsigned long long>(std::time(nullptr)) + 100000) * 1000;
};

TEST_F(HourlyCheckTest, TheSizeIsChecked3600SecondsAfterTheLastCheck) {
  grow(sizeToCutAt);
  log(tarn::INFO, "one", lastCheck + hour - 1000);
  log(tarn::INFO, "two", lastCheck + hour);
  EXPECT_TRUE(archives().empty());
  log(tarn::INFO, "three", lastCheck + hour);
  EXPECT_EQ(archives().size(), 1u);
}

TEST_F(HourlyCheckTest, AFailedCheckIsMadeAgainAtTheNextLine) {
  log(tarn::INFO, "one", lastCheck + hour);
  std::filesystem::remove(file);
  log(tarn::INFO, "two", lastCheck + hour);
  grow(sizeToCutAt);
  EXPECT_TRUE(archives().empty());
  log(tarn::INFO, "three", lastCheck + hour);
  EXPECT_EQ(archives().size(), 1u);
}

TEST_F(SegmentingTest, AMissingFileCannotBeChecked) {
  target.onRegisterTarget();
  std::filesystem::remove(file);
  EXPECT_FALSE(target.SegmentLogFile(true));
}

TEST_F(SegmentingTest, ACutWhoseCopyFailsLeavesTheFileAsItIs) {
  grow(sizeToCutAt);
  support::Child cutter([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{sizeToCutAt / 2, sizeToCutAt / 2};
    ::setrlimit(RLIMIT_FSIZE, &full);
    const bool checked = target.onRegisterTarget() && target.SegmentLogFile(true);
    target.onUnregisterTarget();
    return checked ? 0 : 1;
  });
  EXPECT_EQ(cutter.wait(), 0);
  EXPECT_TRUE(archives().empty());
  EXPECT_EQ(std::filesystem::file_size(file), sizeToCutAt);
}

TEST_F(SegmentingTest, EmptyingLeavesTheFileInItsPlace) {
  support::writeFile(file, "text");
  EXPECT_TRUE(target.cleanFile());
  EXPECT_EQ(std::filesystem::file_size(file), 0u);
}

TEST_F(SegmentingTest, EmptyingFailsWhereNoFileCanBeOpened) {
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  EXPECT_FALSE(target.cleanFile());
}

TEST_F(SegmentingTest, RenamingMovesTheFileAndRemembersItsName) {
  support::writeFile(file, "text");
  EXPECT_EQ(target.getRenamedFilePath(), "");
  ASSERT_TRUE(target.renameLogFile());
  EXPECT_EQ(support::contentsOf(target.getRenamedFilePath()), "text");
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SegmentingTest, RenamingToATakenNameFails) {
  const support::FakeLocalTime now;
  const std::string taken = folder / ("Kelvo " + now.stamp + ".log");
  support::writeFile(file, "text");
  support::writeFile(taken, "taken");
  EXPECT_FALSE(target.renameLogFile());
  EXPECT_EQ(target.getRenamedFilePath(), "");
  EXPECT_EQ(support::contentsOf(file), "text");
  EXPECT_EQ(support::contentsOf(taken), "taken");
}

TEST_F(SegmentingTest, RenamingAMissingFileFails) {
  std::filesystem::remove(file);
  EXPECT_FALSE(target.renameLogFile());
  EXPECT_EQ(target.getRenamedFilePath(), "");
}

TEST(TimeStamp, StandsBeforeTheExtension) {
  const support::FakeLocalTime now;
  std::string path = "/logs/Kelvo.log";
  EXPECT_TRUE(tarn::appendTimeStampToFile(path));
  EXPECT_EQ(path, "/logs/Kelvo " + now.stamp + ".log");
}

TEST(TimeStamp, LeavesADotWithoutAnExtension) {
  const support::FakeLocalTime now;
  std::string path = "/logs/Kelvo";
  EXPECT_TRUE(tarn::appendTimeStampToFile(path));
  EXPECT_EQ(path, "/logs/Kelvo " + now.stamp + ".");
}

TEST(ContentCopy, HoldsWhatTheFileHolds) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "a", std::string(8192, 'x'));
  EXPECT_TRUE(tarn::copyContentOfFileToFile(folder / "a", folder / "b"));
  EXPECT_EQ(support::contentsOf(folder / "b"), std::string(8192, 'x'));
  EXPECT_FALSE(tarn::copyContentOfFileToFile(folder / "missing", folder / "b"));
}

// Runs `body` with a disk of its own of so many bytes mounted on a folder; `kImpossible` when the system does not allow
// it.
int onSmallDisk(const std::string& folder, std::size_t bytes, const std::function<int()>& body) {
  return support::withOwnMounts([&] { return support::mountMemory(folder, bytes) ? body() : support::kImpossible; });
}

std::string messageOf(const std::string& line) {
  return line.substr(line.rfind(" | ") + 3);
}

TEST_F(SegmentingTest, OnAFullDiskLinesAreDroppedUntilThereIsRoomAgain) {
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
  if (result == support::kImpossible) GTEST_SKIP() << "this system does not let a test mount a disk of its own";
  EXPECT_EQ(result, 0);
}

TEST_F(SegmentingTest, OnAFullDiskACutLeavesNoUnfinishedArchive) {
  const int result = onSmallDisk(folder.path(), 14 << 20, [&] {
    grow(sizeToCutAt);
    target.setLogFile("Kelvo.log", folder.path().c_str());
    if (!target.onRegisterTarget()) return 1;
    if (!archives().empty()) return 2;
    if (std::filesystem::file_size(file) != sizeToCutAt) return 3;
    log(tarn::INFO, "after");
    target.onUnregisterTarget();
    return lastMessage() == "after" ? 0 : 4;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "this system does not let a test mount a disk of its own";
  EXPECT_EQ(result, 0);
}

}  // namespace
