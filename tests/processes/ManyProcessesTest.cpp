#include <gtest/gtest.h>
#include <sched.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>

#include "applog/OVNLoggingFileOperationFlag.h"
#include "tests/processes/LogReader.h"
#include "tests/processes/Rotator.h"
#include "tests/processes/Writers.h"
#include "tests/support/Child.h"
#include "tests/support/Clock.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Semaphores.h"

namespace {

using processes::KilledWriters;
using processes::LogLines;
using processes::Rotator;
using processes::Writers;
using support::becomesTrue;
using support::Child;

constexpr int kFileFlagNumber = 2147483547;
constexpr int kFileLockNumber = 11;
constexpr std::uintmax_t kMaxLogSize = 10 * 1024 * 1024;

class ManyProcessesTest : public testing::Test {
 protected:
  ManyProcessesTest() {
    std::filesystem::create_directories(logs);
    support::writeFile(file, "");
  }

  bool logReachesMaxSize() const {
    return becomesTrue([&] { return std::filesystem::file_size(file) >= kMaxLogSize; });
  }

  // Returns how many more lines each of four writers must write so that the file exceeds the size by a quarter.
  int linesPerRotation() const {
    const auto missing =
        1.25 * static_cast<double>(kMaxLogSize) - static_cast<double>(std::filesystem::file_size(file));
    return static_cast<int>(missing / 4 / processes::kMeanLineSize);
  }

  const std::string home = support::freshHome();
  const std::string logs = home + "/Library/Logs";
  const std::string file = logs + "/Kelvo.log";
};

// Killed writers stay counted in the set of the file's lock, so that no process removes it.
class LockSetRemover {
 public:
  LockSetRemover(const std::string& home, const std::string& file)
      : flag_(home, kFileFlagNumber), lock_(file, kFileLockNumber) {}

 private:
  support::SetRemover flag_;
  support::SetRemover lock_;
};

// Every process starts while the file is small, so that only the rotator rotates it.
TEST_F(ManyProcessesTest, NoAcknowledgedLineIsLostOrRepeated) {
  constexpr int kLinesEach = 50000;
  const LockSetRemover remover(home, file);
  Writers writers(4, kLinesEach);
  KilledWriters killedWriters;
  {
    Rotator rotator(logs);
    while (writers.allowed() + linesPerRotation() < kLinesEach) {
      rotator.waitForNextSecond();
      for (int i = 0; i < 3; ++i)
        killedWriters.add();
      writers.allow(writers.allowed() + linesPerRotation());
      killedWriters.killOne();
      ASSERT_TRUE(logReachesMaxSize());
      rotator.rotate();
      killedWriters.killOne();
      killedWriters.killOne();
      ASSERT_TRUE(writers.waitUntilDone());
    }
  }
  writers.allow(kLinesEach);
  writers.expectEnded();

  const LogLines found = processes::readLog(logs);
  EXPECT_GE(found.archives, 30);
  EXPECT_LE(found.incomplete, killedWriters.count());
  RecordProperty("incomplete", found.incomplete);
  RecordProperty("archives", found.archives);
  RecordProperty("killed", killedWriters.count());
  writers.expectNoneLost(found);
  writers.expectNoneRepeated(found);
  killedWriters.expectNoneLostOrRepeated(found);
}

// Returns the archives, complete or not, with the time of their last change, which tells a new file from one of the
// same name.
std::map<std::string, std::filesystem::file_time_type> archivesIn(const std::string& folder) {
  std::map<std::string, std::filesystem::file_time_type> archives;
  std::error_code removed;
  for (const std::string& name : support::namesIn(folder)) {
    if (name != "Kelvo.log") archives[name] = std::filesystem::last_write_time(folder + "/" + name, removed);
  }
  return archives;
}

// Kills a process that rotates the file at its registration, some time after the rotation began: during the copy,
// between the copy and the truncation, or after both.
void killDuringRotation(const std::string& logs, std::chrono::microseconds later) {
  const auto before = archivesIn(logs);
  Child rotating([&] {
    const Rotator rotator(logs);
    return ::pause();
  });
  ASSERT_TRUE(becomesTrue([&] { return archivesIn(logs) != before; }));
  const auto moment = std::chrono::steady_clock::now() + later;
  while (std::chrono::steady_clock::now() < moment)
    ::sched_yield();
  rotating.kill();
}

TEST_F(ManyProcessesTest, KilledRotationLosesNoLine) {
  constexpr int kRotations = 8;
  constexpr int kLinesPerRotation = 3000;
  const LockSetRemover remover(home, file);
  Writers writers(2, kRotations * kLinesPerRotation);
  for (int rotation = 1; rotation <= kRotations; ++rotation) {
    writers.allow(rotation * kLinesPerRotation);
    ASSERT_TRUE(logReachesMaxSize());
    killDuringRotation(logs, std::chrono::milliseconds(2 * (rotation - 1)));
    const std::time_t secondOfTheKill = support::currentSecond();
    ASSERT_TRUE(writers.waitUntilDone());
    while (support::currentSecond() <= secondOfTheKill)
      ::sched_yield();
  }
  writers.expectEnded();
  { const Rotator whole(logs); }

  const LogLines found = processes::readLog(logs);
  EXPECT_GE(found.archives, 1);
  RecordProperty("archives", found.archives);
  writers.expectNoneLost(found);
}

// A child process takes both locks and is killed.
class KilledHolderTest : public ManyProcessesTest {
 protected:
  KilledHolderTest() {
    flag.semid = -1;
    flag.held = false;
    EXPECT_TRUE(flag.createFlag());
    EXPECT_TRUE(lock.create(file, kFileLockNumber));
  }
  ~KilledHolderTest() override { flag.finalizeFlag(); }

  Child holder() {
    *holds = false;
    Child process([this] {
      *holds = flag.startFileOperation() && lock.wait();
      return ::pause();
    });
    EXPECT_TRUE(becomesTrue([this] { return holds->load(); }));
    return process;
  }

  const LockSetRemover remover{home, file};
  support::Shared<std::atomic<bool>> holds;
  tarn::BinaryLock lock;
  OVNLoggingFileOperationFlag flag;
};

// Waits for the end of the process before it tries the locks: a killed process may take long to end.
TEST_F(KilledHolderTest, LocksAreFreeWhenTheHolderEnded) {
  for (int round = 0; round < 31; ++round) {
    Child killed = holder();
    killed.kill();
    killed.wait();
    ASSERT_TRUE(flag.signal() && lock.signal()) << "without waiting";
    lock.release();
    flag.endFileOperation();
  }
}

TEST_F(KilledHolderTest, DeathOfTheHolderWakesAWaiter) {
  for (int round = 0; round < 5; ++round) {
    Child killed = holder();
    Child waiter([this] { return flag.startFileOperation() && lock.wait() ? 0 : 1; });
    ASSERT_TRUE(becomesTrue([this] { return support::waitersOn(flag.semid, 1) == 1; }));
    killed.kill();
    EXPECT_EQ(waiter.wait(), 0);
  }
}

}  // namespace
