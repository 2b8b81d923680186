#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "applog/OVNSemaphoreLock.h"
#include "applog/OVNSystemLevelDeploymentLock.h"
#include "tests/support/Child.h"
#include "tests/support/Home.h"
#include "tests/support/Powers.h"
#include "tests/support/SemaphoreOperations.h"
#include "tests/support/Semaphores.h"

namespace {

using support::Operation;
using support::operationsOf;
using testing::ElementsAre;

constexpr int number = 0x5b;

class DeploymentLockTest : public testing::Test {
 protected:
  // Answers of another process while this one holds the lock, or not.
  static int askedByAnother(bool (*question)(OVNSystemLevelDeploymentLock&)) {
    support::Child other([&] {
      OVNSystemLevelDeploymentLock theirs(number);
      return question(theirs) ? 1 : 0;
    });
    return other.wait();
  }

  static bool isLocked(OVNSystemLevelDeploymentLock& lock) { return lock.isLocked(); }
  static bool isLocked2(OVNSystemLevelDeploymentLock& lock) { return lock.isLocked2(); }
  static bool acquire(OVNSystemLevelDeploymentLock& lock) { return lock.AcquireLock(); }

  static int set() { return support::setOf("/tmp", number); }

  const support::SetRemover remover{"/tmp", number};
  OVNSystemLevelDeploymentLock lock{number};
};

TEST_F(DeploymentLockTest, OpeningDoesNothing) {
  EXPECT_EQ(lock.open(), 0);
  EXPECT_EQ(set(), -1);
}

TEST_F(DeploymentLockTest, TheSetHasOneMemberAndMode0666) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_EQ(support::membersOf(set()), 1u);
  EXPECT_EQ(support::modeOfSet(set()), 0666u);
}

TEST_F(DeploymentLockTest, EveryOperationCarriesUndo) {
  EXPECT_THAT(operationsOf([&] { lock.AcquireLock(); }), ElementsAre(Operation(0, -1, SEM_UNDO | IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { lock.releaseLock(); }), ElementsAre(Operation(0, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { lock.waitUntilReleased(); }),
              ElementsAre(Operation(0, -1, SEM_UNDO), Operation(0, +1, SEM_UNDO)));
}

TEST_F(DeploymentLockTest, WaitingReturnsAtOnceWhenThereIsNoLock) {
  EXPECT_TRUE(lock.waitUntilReleased());
  EXPECT_FALSE(lock.isLocked2());
  EXPECT_EQ(set(), -1);
}

TEST_F(DeploymentLockTest, OneProcessAtATimeHoldsIt) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_TRUE(lock.AcquireLock());
  EXPECT_EQ(askedByAnother(acquire), 0);
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(askedByAnother(acquire), 1);
}

TEST_F(DeploymentLockTest, IsLockedForEverybodyElseWhileItIsHeld) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_EQ(askedByAnother(isLocked), 1);
  EXPECT_EQ(askedByAnother(isLocked2), 1);
  EXPECT_TRUE(lock.isLocked2());
  lock.releaseLock();
  EXPECT_EQ(askedByAnother(isLocked), 0);
  EXPECT_EQ(askedByAnother(isLocked2), 0);
}

TEST_F(DeploymentLockTest, AHolderThatAsksItsOwnLockGivesItUp) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_FALSE(lock.isLocked());
  EXPECT_EQ(askedByAnother(isLocked), 0);
}

TEST_F(DeploymentLockTest, ASetThatMayNotBeChangedIsNoLock) {
  ASSERT_NE(::semget(::ftok("/tmp", number), 1, IPC_CREAT | 0400), -1);
  EXPECT_EQ(support::inChild([&] {
              if (!support::giveUpPowers()) return 2;
              return lock.waitUntilReleased() && !lock.AcquireLock() ? 0 : 1;
            }),
            0);
}

TEST_F(DeploymentLockTest, ReleasingWithoutHoldingChangesNothing) {
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(set(), -1);
}

TEST_F(DeploymentLockTest, ReleasesWhenItIsDestroyedAndLeavesTheSet) {
  {
    OVNSystemLevelDeploymentLock passing(number);
    ASSERT_TRUE(passing.AcquireLock());
    EXPECT_EQ(support::valueOf(set(), 0), 0);
  }
  EXPECT_EQ(support::valueOf(set(), 0), 1);
}

TEST_F(DeploymentLockTest, WaitingEndsWhenTheHolderReleasesAndTakesNothing) {
  ASSERT_TRUE(lock.AcquireLock());
  support::Child other([] {
    OVNSystemLevelDeploymentLock theirs(number);
    return theirs.waitUntilReleased() ? 0 : 1;
  });
  ASSERT_TRUE(support::comesTrue([] { return support::sleepersOn(set(), 0) == 1; }));
  lock.releaseLock();
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(support::valueOf(set(), 0), 1);
}

// The lock looks taken already while its set is being made.
TEST_F(DeploymentLockTest, AKilledHolderGivesItBack) {
  const support::Shared<std::atomic<bool>> holds;
  support::Child holder([&] {
    OVNSystemLevelDeploymentLock theirs(number);
    *holds = theirs.AcquireLock();
    return ::pause();
  });
  ASSERT_TRUE(support::comesTrue([&] { return holds->load(); }));
  holder.kill();
  EXPECT_TRUE(lock.waitUntilReleased());
}

class SemaphoreLockTest : public testing::Test {
 protected:
  static int set() { return support::setOf("/tmp", number); }

  OVNSemaphoreLock lock{number, 255, SystemLock};
};

TEST_F(SemaphoreLockTest, IsNotLockedUntilASlotIsTaken) {
  EXPECT_FALSE(lock.isLocked());
  EXPECT_EQ(lock.getCurrentLockCount(), 255);
  EXPECT_TRUE(lock.AcquireLock());
  EXPECT_TRUE(lock.isLocked());
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
}

TEST_F(SemaphoreLockTest, TheSetHasTwoMembersAndMode0666) {
  EXPECT_EQ(support::membersOf(set()), 2u);
  EXPECT_EQ(support::modeOfSet(set()), 0666u);
}

TEST_F(SemaphoreLockTest, EveryOperationCarriesUndo) {
  constexpr int freeSlots = 0;
  constexpr int attached = 1;
  std::optional<OVNSemaphoreLock> other;
  EXPECT_THAT(operationsOf([&] { other.emplace(number, 255, SystemLock); }),
              ElementsAre(Operation(attached, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { other->AcquireLock(); }),
              ElementsAre(Operation(freeSlots, -1, SEM_UNDO | IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { other->releaseLock(); }), ElementsAre(Operation(freeSlots, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { other.reset(); }), ElementsAre(Operation(attached, -1, SEM_UNDO | IPC_NOWAIT)));
}

TEST_F(SemaphoreLockTest, EachTakeTakesASlotAndOnlyOneIsGivenBack) {
  lock.AcquireLock();
  lock.AcquireLock();
  EXPECT_EQ(lock.getCurrentLockCount(), 253);
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
}

TEST_F(SemaphoreLockTest, ATakeFailsWhenNoSlotIsFree) {
  OVNSemaphoreLock narrow(number + 1, 1, SystemLock);
  EXPECT_TRUE(narrow.AcquireLock());
  EXPECT_FALSE(narrow.AcquireLock());
}

TEST_F(SemaphoreLockTest, ASetThatExistsKeepsItsNumberOfSlots) {
  OVNSemaphoreLock other(number, 3, SystemLock);
  EXPECT_EQ(other.getCurrentLockCount(), 255);
  EXPECT_FALSE(other.isLocked());
}

TEST_F(SemaphoreLockTest, ASlotThatIsHeldIsNotGivenBackAtDestruction) {
  {
    OVNSemaphoreLock passing(number, 255, SystemLock);
    passing.AcquireLock();
  }
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
}

TEST_F(SemaphoreLockTest, TheLastObjectToGoRemovesTheSet) {
  const int other = number + 1;
  {
    const OVNSemaphoreLock first(other, 1, SystemLock);
    { const OVNSemaphoreLock second(other, 1, SystemLock); }
    EXPECT_NE(support::setOf("/tmp", other), -1);
  }
  EXPECT_EQ(support::setOf("/tmp", other), -1);
}

TEST_F(SemaphoreLockTest, AKilledProcessGivesItsSlotsBack) {
  support::Child holder([] {
    OVNSemaphoreLock theirs(number, 255, SystemLock);
    theirs.AcquireLock();
    theirs.AcquireLock();
    return ::pause();
  });
  ASSERT_TRUE(support::comesTrue([&] { return lock.getCurrentLockCount() == 253; }));
  holder.kill();
  holder.wait();
  EXPECT_FALSE(lock.isLocked());
  EXPECT_EQ(support::valueOf(set(), 1), 1);
}

TEST(UserSemaphoreLock, IsNamedByTheHomeFolder) {
  const OVNSemaphoreLock lock(number, 2, UserLock);
  EXPECT_NE(support::setOf(support::ownHome(), number), -1);
  EXPECT_EQ(support::setOf("/tmp", number), -1);
  EXPECT_EQ(lock.getCurrentLockCount(), 2);
}

TEST(UserSemaphoreLock, AnswersNoWhenTheHomeFolderIsUnknown) {
  const support::PasswordDatabase nobody("");
  OVNSemaphoreLock lock(number, 2, UserLock);
  EXPECT_FALSE(lock.AcquireLock());
  EXPECT_FALSE(lock.isLocked());
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(lock.getCurrentLockCount(), 0);
}

TEST(UserSemaphoreLock, AnyOtherTypeIsOfTheWholeMachine) {
  const OVNSemaphoreLock lock(number, 2, static_cast<LockType>(7));
  EXPECT_NE(support::setOf("/tmp", number), -1);
}

}  // namespace
