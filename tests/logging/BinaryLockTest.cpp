#include "logging/BinaryLock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "platform/PathLock.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Meeting.h"
#include "tests/support/SemaphoreOperations.h"
#include "tests/support/Semaphores.h"

namespace {

using support::Operation;
using support::operationsOf;
using tarn::BinaryLock;
using testing::AnyOf;
using testing::ElementsAre;

constexpr int project = 11;
constexpr int references = 0;
constexpr int mutex = 1;

class BinaryLockTest : public testing::Test {
 protected:
  int set() const { return support::setOf(folder.path(), project); }

  const support::TemporaryFolder folder;
  const support::SetRemover remover{folder.path(), project};
  BinaryLock lock;
};

TEST_F(BinaryLockTest, IsClosedAtFirst) {
  EXPECT_EQ(lock.getReferenceCount(), -1);
  EXPECT_FALSE(lock.wait());
  EXPECT_FALSE(lock.signal());
  EXPECT_FALSE(lock.release());
  EXPECT_TRUE(lock.finalize());
}

TEST_F(BinaryLockTest, StaysClosedOnAPathThatDoesNotExist) {
  EXPECT_FALSE(lock.create(folder / "missing", project));
  EXPECT_EQ(lock.getReferenceCount(), -1);
}

TEST_F(BinaryLockTest, IsFreeWhenItIsMade) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  EXPECT_TRUE(lock.signal());
  EXPECT_TRUE(lock.release());
  lock.finalize();
}

TEST_F(BinaryLockTest, TheSetHasTwoMembersAndMode0666) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  EXPECT_EQ(support::membersOf(set()), 2u);
  EXPECT_EQ(support::modeOfSet(set()), 0666u);
  lock.finalize();
}

TEST_F(BinaryLockTest, OnlyTheCountCarriesNoUndo) {
  EXPECT_THAT(operationsOf([&] { lock.create(folder.path(), project); }),
              ElementsAre(Operation(references, +1, IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { lock.wait(); }),
              ElementsAre(AnyOf(Operation(mutex, -1, SEM_UNDO), Operation(mutex, -1, SEM_UNDO | IPC_NOWAIT))));
  EXPECT_THAT(operationsOf([&] { lock.release(); }), ElementsAre(Operation(mutex, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { lock.signal(); }), ElementsAre(Operation(mutex, -1, SEM_UNDO | IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { lock.finalize(); }), ElementsAre(Operation(references, -1, IPC_NOWAIT)));
}

TEST_F(BinaryLockTest, CreatingTwiceCountsOnce) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  EXPECT_TRUE(lock.create(folder.path(), project));
  EXPECT_EQ(lock.getReferenceCount(), 1);
  lock.finalize();
}

TEST_F(BinaryLockTest, TwoProcessesShareOneSetUntilTheLastHasFinalized) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  const support::Shared<std::atomic<bool>> mayLeave;
  support::Child other([&] {
    BinaryLock theirs;
    if (!theirs.create(folder.path(), project)) return 1;
    return support::comesTrue([&] { return mayLeave->load(); }) && theirs.finalize() ? 0 : 2;
  });
  EXPECT_TRUE(support::comesTrue([&] { return lock.getReferenceCount() == 2; }));
  *mayLeave = true;
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(lock.getReferenceCount(), 1);
  EXPECT_NE(set(), -1);

  EXPECT_TRUE(lock.finalize());
  EXPECT_EQ(lock.getReferenceCount(), -1);
  EXPECT_EQ(set(), -1);
}

TEST_F(BinaryLockTest, IsFreeAgainWhenItIsMadeAnew) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  ASSERT_TRUE(lock.wait());
  ASSERT_TRUE(lock.finalize());
  ASSERT_TRUE(lock.create(folder.path(), project));
  EXPECT_TRUE(lock.signal());
  lock.release();
  lock.finalize();
}

TEST_F(BinaryLockTest, SignalFailsAtOnceWhileAnotherProcessHoldsTheLock) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  ASSERT_TRUE(lock.wait());
  support::Child other([&] {
    BinaryLock theirs;
    const bool taken = theirs.create(folder.path(), project) && theirs.signal();
    theirs.finalize();
    return taken ? 1 : 0;
  });
  EXPECT_EQ(other.wait(), 0);
  EXPECT_TRUE(lock.release());
  lock.finalize();
}

TEST_F(BinaryLockTest, WaitReturnsWhenTheHolderReleases) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  ASSERT_TRUE(lock.wait());
  support::Child other([&] {
    BinaryLock theirs;
    const bool taken = theirs.create(folder.path(), project) && theirs.wait() && theirs.release();
    theirs.finalize();
    return taken ? 0 : 1;
  });
  ASSERT_TRUE(support::comesTrue([&] { return support::sleepersOn(set(), mutex) == 1; }));
  lock.release();
  EXPECT_EQ(other.wait(), 0);
  lock.finalize();
}

TEST_F(BinaryLockTest, AKilledHolderFreesTheLockAndStaysCounted) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  support::Child holder([&] {
    BinaryLock theirs;
    theirs.create(folder.path(), project);
    theirs.wait();
    return ::pause();
  });
  ASSERT_TRUE(support::comesTrue([&] { return support::valueOf(set(), mutex) == 0; }));
  holder.kill();
  EXPECT_TRUE(lock.wait());
  lock.release();
  EXPECT_EQ(lock.getReferenceCount(), 2);
  lock.finalize();
  EXPECT_NE(set(), -1);
}

TEST_F(BinaryLockTest, AKilledHolderThatDidNotWaitForTheLockFreesItToo) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  support::Child holder([&] {
    BinaryLock theirs;
    theirs.create(folder.path(), project);
    theirs.signal();
    return ::pause();
  });
  ASSERT_TRUE(support::comesTrue([&] { return support::valueOf(set(), mutex) == 0; }));
  holder.kill();
  EXPECT_TRUE(lock.wait());
  lock.release();
  lock.finalize();
}

TEST_F(BinaryLockTest, FinalizeReportsASetThatIsGone) {
  ASSERT_TRUE(lock.create(folder.path(), project));
  ::semctl(set(), 0, IPC_RMID);
  EXPECT_FALSE(lock.finalize());
  EXPECT_TRUE(lock.finalize());
}

TEST_F(BinaryLockTest, FinalizesWhenItIsDestroyed) {
  const int other = ::semget(IPC_PRIVATE, 1, 0600);  // so that the lock's own set is not the one numbered 0
  {
    BinaryLock passing;
    ASSERT_TRUE(passing.create(folder.path(), project));
    ASSERT_NE(set(), 0);
  }
  EXPECT_EQ(set(), -1);
  ::semctl(other, 0, IPC_RMID);
}

TEST_F(BinaryLockTest, ManyWhoMakeItAtOnceMakeOneFreeLock) {
  for (int round = 0; round < 30; ++round) {
    support::Meeting makersMeeting(8);
    std::vector<support::Child> makers;
    for (int maker = 0; maker < 8; ++maker) {
      makers.emplace_back([&] {
        BinaryLock theirs;
        makersMeeting.startTogether();
        const bool made = theirs.create(folder.path(), project) && makersMeeting.meet();
        const bool free = support::valueOf(set(), mutex) == 1 && makersMeeting.meet();
        theirs.finalize();
        return made && free ? 0 : 1;
      });
    }
    for (support::Child& maker : makers)
      ASSERT_EQ(maker.wait(), 0);
  }
}

TEST_F(BinaryLockTest, ALockIsNeverLeftWithoutASetWhileOthersComeAndGo) {
  std::vector<support::Child> visitors;
  for (int visitor = 0; visitor < 4; ++visitor) {
    visitors.emplace_back([&] {
      for (int visits = 0; visits < 300; ++visits) {
        BinaryLock theirs;
        if (!theirs.create(folder.path(), project)) return 1;
        if (!theirs.wait()) return 2;
        if (!theirs.release()) return 3;
        const platform::PathLock oneAtATime(folder.path());
        if (!theirs.finalize()) return 4;
      }
      return 0;
    });
  }
  for (support::Child& visitor : visitors)
    EXPECT_EQ(visitor.wait(), 0);
  EXPECT_EQ(set(), -1);
}

}  // namespace
