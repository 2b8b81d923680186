#include "applog/OVNBinarySemaphore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <vector>

#include "tests/support/Barrier.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/SemaphoreOperations.h"
#include "tests/support/Semaphores.h"

namespace {

using support::Operation;
using support::operationsOf;
using testing::AnyOf;
using testing::ElementsAre;

constexpr int kNumber = 2147483547;
constexpr int kAttached = 0;
constexpr int kMutex = 1;

OVNBinarySemaphore notCreated() {
  OVNBinarySemaphore semaphore;
  semaphore.semid = -1;
  semaphore.held = false;
  return semaphore;
}

class OVNBinarySemaphoreTest : public testing::Test {
 protected:
  ~OVNBinarySemaphoreTest() override { one.finalize(); }

  bool create(OVNBinarySemaphore& semaphore) const { return semaphore.create(folder.path().c_str(), kNumber); }
  int set() const { return support::setOf(folder.path(), kNumber); }

  const support::TemporaryFolder folder;
  const support::SetRemover remover{folder.path(), kNumber};
  OVNBinarySemaphore one = notCreated();
};

std::atomic<int>* signalCount = nullptr;

TEST_F(OVNBinarySemaphoreTest, TakesFailBeforeCreate) {
  EXPECT_FALSE(one.tryWait());
  EXPECT_FALSE(one.signal());
  EXPECT_EQ(one.getCount(), -1);
  EXPECT_TRUE(one.finalize());
  EXPECT_FALSE(one.held);
}

TEST_F(OVNBinarySemaphoreTest, CreateFailsForMissingPath) {
  EXPECT_FALSE(one.create((folder / "missing").c_str(), kNumber));
  EXPECT_EQ(one.semid, -1);
}

TEST_F(OVNBinarySemaphoreTest, NewMutexIsFree) {
  ASSERT_TRUE(create(one));
  EXPECT_EQ(one.getCount(), 1);
  EXPECT_FALSE(one.held);
}

TEST_F(OVNBinarySemaphoreTest, SetHasTwoMembersAndMode0666) {
  ASSERT_TRUE(create(one));
  EXPECT_EQ(support::membersOf(one.semid), 2u);
  EXPECT_EQ(support::modeOfSet(one.semid), 0666u);
}

TEST_F(OVNBinarySemaphoreTest, OnlyInitialReleaseHasNoUndo) {
  OVNBinarySemaphore other = notCreated();
  const Operation attach(kAttached, +1, SEM_UNDO);
  EXPECT_THAT(operationsOf([&] { create(one); }), ElementsAre(Operation(kMutex, +1, IPC_NOWAIT), attach));
  EXPECT_THAT(operationsOf([&] { create(other); }), ElementsAre(attach));
  EXPECT_THAT(operationsOf([&] { one.tryWait(); }),
              ElementsAre(AnyOf(Operation(kMutex, -1, SEM_UNDO), Operation(kMutex, -1, SEM_UNDO | IPC_NOWAIT))));
  EXPECT_THAT(operationsOf([&] { one.release(); }), ElementsAre(Operation(kMutex, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { one.signal(); }), ElementsAre(Operation(kMutex, -1, SEM_UNDO | IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { other.finalize(); }), ElementsAre(Operation(kAttached, -1, SEM_UNDO)));
}

TEST_F(OVNBinarySemaphoreTest, SecondCreateDoesNotAttachAgain) {
  ASSERT_TRUE(create(one));
  EXPECT_TRUE(create(one));
  EXPECT_EQ(support::valueOf(one.semid, kAttached), 1);
}

TEST_F(OVNBinarySemaphoreTest, CountShowsTakeAndRelease) {
  ASSERT_TRUE(create(one));
  EXPECT_TRUE(one.tryWait());
  EXPECT_TRUE(one.held);
  EXPECT_EQ(one.getCount(), 0);
  EXPECT_TRUE(one.release());
  EXPECT_FALSE(one.held);
  EXPECT_EQ(one.getCount(), 1);
}

TEST_F(OVNBinarySemaphoreTest, ReleaseWithoutTakeHasNoEffect) {
  ASSERT_TRUE(create(one));
  EXPECT_TRUE(one.release());
  EXPECT_EQ(one.getCount(), 1);
}

TEST_F(OVNBinarySemaphoreTest, FailedReleaseKeepsHeld) {
  ASSERT_TRUE(create(one));
  ASSERT_TRUE(one.tryWait());
  ::semctl(one.semid, 0, IPC_RMID);
  EXPECT_FALSE(one.release());
  EXPECT_TRUE(one.held);
  EXPECT_FALSE(one.finalize());
  EXPECT_NE(one.semid, -1);
  one.semid = -1;
}

TEST_F(OVNBinarySemaphoreTest, ObjectsOfOneProcessExcludeEachOther) {
  OVNBinarySemaphore other = notCreated();
  ASSERT_TRUE(create(one));
  ASSERT_TRUE(create(other));
  EXPECT_EQ(one.semid, other.semid);
  EXPECT_EQ(support::valueOf(one.semid, kAttached), 2);
  ASSERT_TRUE(one.tryWait());
  EXPECT_FALSE(other.signal());
  EXPECT_FALSE(other.held);
  one.release();
  EXPECT_TRUE(other.signal());
  other.release();
  EXPECT_TRUE(other.finalize());
}

TEST_F(OVNBinarySemaphoreTest, TryWaitWaitsForReleaseDespiteSignals) {
  if (!support::kSignalsInterrupt) GTEST_SKIP() << "the sanitizer delays signals";
  const support::Shared<std::atomic<int>> caught;
  ASSERT_TRUE(create(one));
  ASSERT_TRUE(one.tryWait());
  support::Child waiting([&] {
    signalCount = &*caught;
    struct sigaction action {};
    action.sa_handler = [](int) { ++*signalCount; };
    ::sigaction(SIGUSR1, &action, nullptr);
    OVNBinarySemaphore theirs = notCreated();
    return create(theirs) && theirs.tryWait() && theirs.release() && theirs.finalize() ? 0 : 1;
  });
  for (int signals = 0; signals < 3; ++signals) {
    ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(one.semid, kMutex) == 1; }));
    waiting.send(SIGUSR1);
    ASSERT_TRUE(support::becomesTrue([&] { return *caught == signals + 1; }));
  }
  one.release();
  EXPECT_EQ(waiting.wait(), 0);
}

TEST_F(OVNBinarySemaphoreTest, LastFinalizeRemovesTheSet) {
  OVNBinarySemaphore other = notCreated();
  ASSERT_TRUE(create(one));
  ASSERT_TRUE(create(other));
  EXPECT_TRUE(other.finalize());
  EXPECT_NE(set(), -1);
  ASSERT_TRUE(one.tryWait());
  EXPECT_TRUE(one.finalize());
  EXPECT_EQ(set(), -1);
  EXPECT_EQ(one.semid, -1);

  one.held = false;
  ASSERT_TRUE(create(one));
  EXPECT_EQ(one.getCount(), 1);
}

TEST_F(OVNBinarySemaphoreTest, FinalizeDoesNotReleaseTheMutex) {
  OVNBinarySemaphore other = notCreated();
  ASSERT_TRUE(create(one));
  ASSERT_TRUE(create(other));
  ASSERT_TRUE(other.tryWait());
  EXPECT_TRUE(other.finalize());
  EXPECT_EQ(one.getCount(), 0);
}

TEST_F(OVNBinarySemaphoreTest, KilledHolderIsDetachedAndReleases) {
  ASSERT_TRUE(create(one));
  support::Child holder([&] {
    OVNBinarySemaphore theirs = notCreated();
    create(theirs);
    theirs.tryWait();
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return one.getCount() == 0; }));
  EXPECT_EQ(support::valueOf(one.semid, kAttached), 2);
  holder.kill();
  EXPECT_TRUE(one.tryWait());
  holder.wait();
  EXPECT_EQ(support::valueOf(one.semid, kAttached), 1);
  one.release();
}

// macOS: the error of a process without a free undo entry.
TEST_F(OVNBinarySemaphoreTest, AnUncountedCreateForgetsTheSet) {
  OVNBinarySemaphore other = notCreated();
  ASSERT_TRUE(create(other));
  {
    const support::FailingOperation failing(kAttached, +1, EINVAL);
    EXPECT_FALSE(create(one));
    EXPECT_EQ(errno, ENOSPC);
  }
  EXPECT_EQ(one.semid, -1);
  EXPECT_TRUE(one.finalize());
  EXPECT_EQ(support::valueOf(other.semid, kAttached), 1);
  EXPECT_TRUE(create(one));
  EXPECT_TRUE(other.finalize());
}

TEST_F(OVNBinarySemaphoreTest, ATakeWithoutUndoEntryKeepsTheSet) {
  ASSERT_TRUE(create(one));
  {
    const support::FailingOperation failing(kMutex, -1, EINVAL);
    EXPECT_FALSE(one.tryWait());
    EXPECT_EQ(errno, ENOSPC);
  }
  EXPECT_EQ(one.getCount(), 1);
  EXPECT_TRUE(one.tryWait());
  EXPECT_TRUE(one.release());
}

TEST_F(OVNBinarySemaphoreTest, ConcurrentCreatesMakeOneFreeMutex) {
  for (int round = 0; round < 30; ++round) {
    support::Barrier barrier(8);
    std::vector<support::Child> processes;
    for (int i = 0; i < 8; ++i) {
      processes.emplace_back([&] {
        OVNBinarySemaphore theirs = notCreated();
        barrier.spin();
        const bool created = create(theirs) && barrier.wait();
        const bool free = theirs.getCount() == 1 && barrier.wait();
        theirs.finalize();
        return created && free ? 0 : 1;
      });
    }
    for (support::Child& process : processes)
      ASSERT_EQ(process.wait(), 0);
    support::SetRemover leftover(folder.path(), kNumber);
  }
}

}  // namespace
