#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "applog/Logger.h"
#include "tests/processes/Cutter.h"
#include "tests/processes/Ledger.h"
#include "tests/processes/Writers.h"
#include "tests/support/Child.h"
#include "tests/support/Clock.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Semaphores.h"

namespace {

using processes::Cutter;
using processes::Ledger;
using processes::Victims;
using processes::Writers;
using support::Child;
using support::comesTrue;

constexpr int fileFlagNumber = 2147483547;
constexpr int fileLockNumber = 11;
constexpr std::uintmax_t sizeToCutAt = 10 * 1024 * 1024;

class ManyProcessesTest : public testing::Test {
 protected:
  ManyProcessesTest() {
    std::filesystem::create_directories(logs);
    support::writeFile(file, "");
  }

  bool logReachesTheSizeToCutAt() const {
    return comesTrue([&] { return std::filesystem::file_size(file) >= sizeToCutAt; });
  }

  // How many more lines each of four writers may write to bring the file well over that size.
  int linesToCut() const {
    const auto missing =
        1.25 * static_cast<double>(sizeToCutAt) - static_cast<double>(std::filesystem::file_size(file));
    return static_cast<int>(missing / 4 / processes::meanLineSize);
  }

  const std::string home = support::freshHome();
  const std::string logs = home + "/Library/Logs";
  const std::string file = logs + "/Kelvo.log";
};

// The set of the file's lock outlives killed writers, and is named by the file.
class LeftoverRemover {
 public:
  LeftoverRemover(const std::string& home, const std::string& file)
      : flag_(home, fileFlagNumber), lock_(file, fileLockNumber) {}

 private:
  support::SetRemover flag_;
  support::SetRemover lock_;
};

// A process that starts finds the file small, so that only the cutter cuts it: an archive is named after its second,
// and a second cut in the same second would replace it.
TEST_F(ManyProcessesTest, EveryAcknowledgedLineIsFoundOnceAcrossThirtyCutsWhileWritersAreKilled) {
  constexpr int linesEach = 50000;
  const LeftoverRemover remover(home, file);
  Writers writers(4, linesEach);
  Victims victims;
  {
    Cutter cutter(logs);
    while (writers.allowed() + linesToCut() < linesEach) {
      cutter.awaitAnotherSecond();
      for (int i = 0; i < 3; ++i)
        victims.add();
      writers.allow(writers.allowed() + linesToCut());
      victims.killOne();
      ASSERT_TRUE(logReachesTheSizeToCutAt());
      cutter.cut();
      victims.killOne();
      victims.killOne();
      ASSERT_TRUE(writers.areDone());
    }
  }
  writers.allow(linesEach);
  writers.expectEnded();

  const Ledger ledger = processes::readLedger(logs);
  EXPECT_GE(ledger.archives, 30);
  EXPECT_LE(ledger.torn, victims.count());
  RecordProperty("torn", ledger.torn);
  RecordProperty("archives", ledger.archives);
  RecordProperty("killed", victims.count());
  writers.expectNoneLost(ledger);
  writers.expectNoneTwice(ledger);
  victims.expectNoneLostOrTwice(ledger);
}

// Kills a process that cuts the file as it registers, some time after the archive has come to be: while it is copied,
// or between the copy and the emptying, or after both.
void killInTheMiddleOfACut(const std::string& logs, std::chrono::microseconds later) {
  const std::size_t before = support::namesIn(logs).size();
  Child cutting([&] {
    const Cutter cutter(logs);
    return ::pause();
  });
  ASSERT_TRUE(comesTrue([&] { return support::namesIn(logs).size() > before; }));
  const auto moment = std::chrono::steady_clock::now() + later;
  while (std::chrono::steady_clock::now() < moment)
    ::sched_yield();
  cutting.kill();
}

TEST_F(ManyProcessesTest, NothingIsLostWhenACutIsKilledInItsMiddle) {
  constexpr int cuts = 8;
  constexpr int linesACut = 3000;
  const LeftoverRemover remover(home, file);
  Writers writers(2, cuts * linesACut);
  for (int cut = 1; cut <= cuts; ++cut) {
    writers.allow(cut * linesACut);
    ASSERT_TRUE(logReachesTheSizeToCutAt());
    killInTheMiddleOfACut(logs, std::chrono::microseconds(500 * (cut - 1)));
    const std::time_t lastSecondOfTheCut = support::currentSecond();
    ASSERT_TRUE(writers.areDone());
    while (support::currentSecond() <= lastSecondOfTheCut)
      ::sched_yield();
  }
  writers.expectEnded();

  const Ledger ledger = processes::readLedger(logs);
  EXPECT_GE(ledger.archives, cuts);
  writers.expectNoneLost(ledger);
}

// Both locks, held by processes that are killed.
class KilledHolderTest : public ManyProcessesTest {
 protected:
  KilledHolderTest() {
    flag.semid = -1;
    flag.held = false;
    EXPECT_TRUE(flag.createFlag());
    EXPECT_TRUE(lock.create(file, fileLockNumber));
  }
  ~KilledHolderTest() override { flag.finalizeFlag(); }

  Child holder() {
    *holds = false;
    Child process([this] {
      *holds = flag.startFileOperation() && lock.wait();
      return ::pause();
    });
    EXPECT_TRUE(comesTrue([this] { return holds->load(); }));
    return process;
  }

  const LeftoverRemover remover{home, file};
  support::Shared<std::atomic<bool>> holds;
  tarn::BinaryLock lock;
  OVNLoggingFileOperationFlag flag;
};

// How soon a process dies is the system's affair, and takes long on a busy machine.
TEST_F(KilledHolderTest, HasFreedBothLocksWhenItsEndIsSeen) {
  for (int death = 0; death < 31; ++death) {
    Child killed = holder();
    killed.kill();
    killed.wait();
    ASSERT_TRUE(flag.signal() && lock.signal()) << "without waiting";
    lock.release();
    flag.endFileOperation();
  }
}

TEST_F(KilledHolderTest, WakesWhoSleepsUntilALockIsFree) {
  for (int death = 0; death < 5; ++death) {
    Child killed = holder();
    Child heir([this] { return flag.startFileOperation() && lock.wait() ? 0 : 1; });
    ASSERT_TRUE(comesTrue([this] { return support::sleepersOn(flag.semid, 1) == 1; }));
    killed.kill();
    EXPECT_EQ(heir.wait(), 0);
  }
}

}  // namespace
