#include "logging/BinaryLock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "platform/PathLock.h"
#include "tests/support/Barrier.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/SemaphoreOperations.h"
#include "tests/support/Semaphores.h"

namespace {

using support::Operation;
using support::operationsOf;
using tarn::BinaryLock;
using testing::AnyOf;
using testing::ElementsAre;

constexpr int kProject = 11;
constexpr int kReferences = 0;
constexpr int kMutex = 1;

class BinaryLockTest : public testing::Test {
 protected:
  int set() const { return support::setOf(folder.path(), kProject); }

  const support::TemporaryFolder folder;
  const support::SetRemover remover{folder.path(), kProject};
  BinaryLock lock;
};

TEST_F(BinaryLockTest, NewLockIsClosed) {
  EXPECT_EQ(lock.getReferenceCount(), -1);
  EXPECT_FALSE(lock.wait());
  EXPECT_FALSE(lock.signal());
  EXPECT_FALSE(lock.release());
  EXPECT_TRUE(lock.finalize());
}

TEST_F(BinaryLockTest, CreateFailsForMissingPath) {
  EXPECT_FALSE(lock.create(folder / "missing", kProject));
  EXPECT_EQ(lock.getReferenceCount(), -1);
}

TEST_F(BinaryLockTest, NewLockIsFree) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  EXPECT_TRUE(lock.signal());
  EXPECT_TRUE(lock.release());
  lock.finalize();
}

TEST_F(BinaryLockTest, SetHasTwoMembersAndMode0666) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  EXPECT_EQ(support::membersOf(set()), 2u);
  EXPECT_EQ(support::modeOfSet(set()), 0666u);
  lock.finalize();
}

TEST_F(BinaryLockTest, OnlyTheCountHasNoUndo) {
  EXPECT_THAT(operationsOf([&] { lock.create(folder.path(), kProject); }),
              ElementsAre(Operation(kReferences, +1, IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { lock.wait(); }),
              ElementsAre(AnyOf(Operation(kMutex, -1, SEM_UNDO), Operation(kMutex, -1, SEM_UNDO | IPC_NOWAIT))));
  EXPECT_THAT(operationsOf([&] { lock.release(); }), ElementsAre(Operation(kMutex, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { lock.signal(); }), ElementsAre(Operation(kMutex, -1, SEM_UNDO | IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { lock.finalize(); }), ElementsAre(Operation(kReferences, -1, IPC_NOWAIT)));
}

TEST_F(BinaryLockTest, SecondCreateDoesNotCountAgain) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  EXPECT_TRUE(lock.create(folder.path(), kProject));
  EXPECT_EQ(lock.getReferenceCount(), 1);
  lock.finalize();
}

TEST_F(BinaryLockTest, LastFinalizeRemovesTheSharedSet) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  const support::Shared<std::atomic<bool>> mayFinalize;
  support::Child other([&] {
    BinaryLock theirs;
    if (!theirs.create(folder.path(), kProject)) return 1;
    return support::becomesTrue([&] { return mayFinalize->load(); }) && theirs.finalize() ? 0 : 2;
  });
  EXPECT_TRUE(support::becomesTrue([&] { return lock.getReferenceCount() == 2; }));
  *mayFinalize = true;
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(lock.getReferenceCount(), 1);
  EXPECT_NE(set(), -1);

  EXPECT_TRUE(lock.finalize());
  EXPECT_EQ(lock.getReferenceCount(), -1);
  EXPECT_EQ(set(), -1);
}

TEST_F(BinaryLockTest, RecreatedLockIsFree) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  ASSERT_TRUE(lock.wait());
  ASSERT_TRUE(lock.finalize());
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  EXPECT_TRUE(lock.signal());
  lock.release();
  lock.finalize();
}

TEST_F(BinaryLockTest, SignalFailsWhileAnotherProcessHolds) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  ASSERT_TRUE(lock.wait());
  support::Child other([&] {
    BinaryLock theirs;
    const bool taken = theirs.create(folder.path(), kProject) && theirs.signal();
    theirs.finalize();
    return taken ? 1 : 0;
  });
  EXPECT_EQ(other.wait(), 0);
  EXPECT_TRUE(lock.release());
  lock.finalize();
}

TEST_F(BinaryLockTest, WaitReturnsWhenTheHolderReleases) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  ASSERT_TRUE(lock.wait());
  support::Child other([&] {
    BinaryLock theirs;
    const bool taken = theirs.create(folder.path(), kProject) && theirs.wait() && theirs.release();
    theirs.finalize();
    return taken ? 0 : 1;
  });
  ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(set(), kMutex) == 1; }));
  lock.release();
  EXPECT_EQ(other.wait(), 0);
  lock.finalize();
}

TEST_F(BinaryLockTest, KilledHolderReleasesAndStaysCounted) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  support::Child holder([&] {
    BinaryLock theirs;
    theirs.create(folder.path(), kProject);
    theirs.wait();
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return support::valueOf(set(), kMutex) == 0; }));
  holder.kill();
  EXPECT_TRUE(lock.wait());
  lock.release();
  EXPECT_EQ(lock.getReferenceCount(), 2);
  lock.finalize();
  EXPECT_NE(set(), -1);
}

TEST_F(BinaryLockTest, KilledHolderReleasesAfterSignal) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  support::Child holder([&] {
    BinaryLock theirs;
    theirs.create(folder.path(), kProject);
    theirs.signal();
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return support::valueOf(set(), kMutex) == 0; }));
  holder.kill();
  EXPECT_TRUE(lock.wait());
  lock.release();
  lock.finalize();
}

TEST_F(BinaryLockTest, FinalizeReportsARemovedSet) {
  ASSERT_TRUE(lock.create(folder.path(), kProject));
  ::semctl(set(), 0, IPC_RMID);
  EXPECT_FALSE(lock.finalize());
  EXPECT_TRUE(lock.finalize());
}

TEST_F(BinaryLockTest, DestructorFinalizes) {
  const int other = ::semget(IPC_PRIVATE, 1, 0600);  // takes set 0, for which the destructor does nothing
  {
    BinaryLock passing;
    ASSERT_TRUE(passing.create(folder.path(), kProject));
    ASSERT_NE(set(), 0);
  }
  EXPECT_EQ(set(), -1);
  ::semctl(other, 0, IPC_RMID);
}

TEST_F(BinaryLockTest, ConcurrentCreatesMakeOneFreeLock) {
  for (int round = 0; round < 30; ++round) {
    support::Barrier barrier(8);
    std::vector<support::Child> processes;
    for (int i = 0; i < 8; ++i) {
      processes.emplace_back([&] {
        BinaryLock theirs;
        barrier.spin();
        const bool created = theirs.create(folder.path(), kProject) && barrier.wait();
        const bool free = support::valueOf(set(), kMutex) == 1 && barrier.wait();
        theirs.finalize();
        return created && free ? 0 : 1;
      });
    }
    for (support::Child& process : processes)
      ASSERT_EQ(process.wait(), 0);
  }
}

TEST_F(BinaryLockTest, ConcurrentFinalizeNeverRemovesAUsedSet) {
  std::vector<support::Child> processes;
  for (int i = 0; i < 4; ++i) {
    processes.emplace_back([&] {
      for (int round = 0; round < 300; ++round) {
        BinaryLock theirs;
        if (!theirs.create(folder.path(), kProject)) return 1;
        if (!theirs.wait()) return 2;
        if (!theirs.release()) return 3;
        const platform::PathLock turn(folder.path());
        if (!theirs.finalize()) return 4;
      }
      return 0;
    });
  }
  for (support::Child& process : processes)
    EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(set(), -1);
}

}  // namespace
