#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "applog/OVNSemaphoreLock.h"
#include "applog/OVNSystemLevelDeploymentLock.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Home.h"
#include "tests/support/SemaphoreOperations.h"
#include "tests/support/Semaphores.h"

namespace {

using support::Operation;
using support::operationsOf;
using testing::ElementsAre;

constexpr int kNumber = 0x5b;

class DeploymentLockTest : public testing::Test {
 protected:
  // Returns the result of a query in another process.
  static int resultInOtherProcess(bool (*query)(OVNSystemLevelDeploymentLock&)) {
    support::Child other([&] {
      OVNSystemLevelDeploymentLock theirs(kNumber);
      return query(theirs) ? 1 : 0;
    });
    return other.wait();
  }

  static bool isLocked(OVNSystemLevelDeploymentLock& lock) { return lock.isLocked(); }
  static bool isLocked2(OVNSystemLevelDeploymentLock& lock) { return lock.isLocked2(); }
  static bool acquire(OVNSystemLevelDeploymentLock& lock) { return lock.AcquireLock(); }

  static int set() { return support::setOf("/tmp", kNumber); }

  const support::SetRemover remover{"/tmp", kNumber};
  OVNSystemLevelDeploymentLock lock{kNumber};
};

TEST_F(DeploymentLockTest, OpenDoesNothing) {
  EXPECT_EQ(lock.open(), 0);
  EXPECT_EQ(set(), -1);
}

TEST_F(DeploymentLockTest, SetHasOneMemberAndMode0666) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_EQ(support::membersOf(set()), 1u);
  EXPECT_EQ(support::modeOfSet(set()), 0666u);
}

TEST_F(DeploymentLockTest, AllOperationsHaveUndo) {
  EXPECT_THAT(operationsOf([&] { lock.AcquireLock(); }), ElementsAre(Operation(0, -1, SEM_UNDO | IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { lock.releaseLock(); }), ElementsAre(Operation(0, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { lock.waitUntilReleased(); }),
              ElementsAre(Operation(0, -1, SEM_UNDO), Operation(0, +1, SEM_UNDO)));
}

TEST_F(DeploymentLockTest, WaitReturnsImmediatelyWithoutASet) {
  EXPECT_TRUE(lock.waitUntilReleased());
  EXPECT_FALSE(lock.isLocked2());
  EXPECT_EQ(set(), -1);
}

TEST_F(DeploymentLockTest, OneProcessHoldsTheLock) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_TRUE(lock.AcquireLock());
  EXPECT_EQ(resultInOtherProcess(acquire), 0);
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(resultInOtherProcess(acquire), 1);
}

TEST_F(DeploymentLockTest, IsLockedForOtherProcessesWhileHeld) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_EQ(resultInOtherProcess(isLocked), 1);
  EXPECT_EQ(resultInOtherProcess(isLocked2), 1);
  EXPECT_TRUE(lock.isLocked2());
  lock.releaseLock();
  EXPECT_EQ(resultInOtherProcess(isLocked), 0);
  EXPECT_EQ(resultInOtherProcess(isLocked2), 0);
}

TEST_F(DeploymentLockTest, IsLockedReleasesTheCallersOwnLock) {
  ASSERT_TRUE(lock.AcquireLock());
  EXPECT_FALSE(lock.isLocked());
  EXPECT_EQ(resultInOtherProcess(isLocked), 0);
}

TEST_F(DeploymentLockTest, SetWithoutWritePermissionIsNoLock) {
  ASSERT_NE(::semget(::ftok("/tmp", kNumber), 1, IPC_CREAT | 0400), -1);
  EXPECT_EQ(support::inChild([&] {
              if (!support::dropCapabilities()) return 2;
              return lock.waitUntilReleased() && !lock.AcquireLock() ? 0 : 1;
            }),
            0);
}

TEST_F(DeploymentLockTest, ReleaseWithoutHoldingHasNoEffect) {
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(set(), -1);
}

TEST_F(DeploymentLockTest, DestructorReleasesAndKeepsTheSet) {
  {
    OVNSystemLevelDeploymentLock passing(kNumber);
    ASSERT_TRUE(passing.AcquireLock());
    EXPECT_EQ(support::valueOf(set(), 0), 0);
  }
  EXPECT_EQ(support::valueOf(set(), 0), 1);
}

TEST_F(DeploymentLockTest, WaitEndsAtReleaseAndTakesNothing) {
  ASSERT_TRUE(lock.AcquireLock());
  support::Child other([] {
    OVNSystemLevelDeploymentLock theirs(kNumber);
    return theirs.waitUntilReleased() ? 0 : 1;
  });
  ASSERT_TRUE(support::becomesTrue([] { return support::waitersOn(set(), 0) == 1; }));
  lock.releaseLock();
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(support::valueOf(set(), 0), 1);
}

// Waits for `holds`, not for the value 0: a new set has that value before it is initialized.
TEST_F(DeploymentLockTest, KilledHolderReleasesTheLock) {
  const support::Shared<std::atomic<bool>> holds;
  support::Child holder([&] {
    OVNSystemLevelDeploymentLock theirs(kNumber);
    *holds = theirs.AcquireLock();
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return holds->load(); }));
  holder.kill();
  EXPECT_TRUE(lock.waitUntilReleased());
}

class SemaphoreLockTest : public testing::Test {
 protected:
  static int set() { return support::setOf("/tmp", kNumber); }

  OVNSemaphoreLock lock{kNumber, 255, SystemLock};
};

TEST_F(SemaphoreLockTest, IsLockedAfterOneSlotIsTaken) {
  EXPECT_FALSE(lock.isLocked());
  EXPECT_EQ(lock.getCurrentLockCount(), 255);
  EXPECT_TRUE(lock.AcquireLock());
  EXPECT_TRUE(lock.isLocked());
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
}

TEST_F(SemaphoreLockTest, SetHasTwoMembersAndMode0666) {
  EXPECT_EQ(support::membersOf(set()), 2u);
  EXPECT_EQ(support::modeOfSet(set()), 0666u);
}

TEST_F(SemaphoreLockTest, AllOperationsHaveUndo) {
  constexpr int kFreeSlots = 0;
  constexpr int kAttached = 1;
  std::optional<OVNSemaphoreLock> other;
  EXPECT_THAT(operationsOf([&] { other.emplace(kNumber, 255, SystemLock); }),
              ElementsAre(Operation(kAttached, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { other->AcquireLock(); }),
              ElementsAre(Operation(kFreeSlots, -1, SEM_UNDO | IPC_NOWAIT)));
  EXPECT_THAT(operationsOf([&] { other->releaseLock(); }), ElementsAre(Operation(kFreeSlots, +1, SEM_UNDO)));
  EXPECT_THAT(operationsOf([&] { other.reset(); }), ElementsAre(Operation(kAttached, -1, SEM_UNDO | IPC_NOWAIT)));
}

TEST_F(SemaphoreLockTest, ReleaseReturnsOnlyOneOfTwoSlots) {
  lock.AcquireLock();
  lock.AcquireLock();
  EXPECT_EQ(lock.getCurrentLockCount(), 253);
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
}

TEST_F(SemaphoreLockTest, AcquireFailsWithoutFreeSlot) {
  OVNSemaphoreLock narrow(kNumber + 1, 1, SystemLock);
  EXPECT_TRUE(narrow.AcquireLock());
  EXPECT_FALSE(narrow.AcquireLock());
}

TEST_F(SemaphoreLockTest, ExistingSetKeepsItsSlotCount) {
  OVNSemaphoreLock other(kNumber, 3, SystemLock);
  EXPECT_EQ(other.getCurrentLockCount(), 255);
  EXPECT_FALSE(other.isLocked());
}

TEST_F(SemaphoreLockTest, DestructorDoesNotReturnHeldSlot) {
  {
    OVNSemaphoreLock passing(kNumber, 255, SystemLock);
    passing.AcquireLock();
  }
  EXPECT_EQ(lock.getCurrentLockCount(), 254);
}

TEST_F(SemaphoreLockTest, LastObjectRemovesTheSet) {
  const int other = kNumber + 1;
  {
    const OVNSemaphoreLock first(other, 1, SystemLock);
    { const OVNSemaphoreLock second(other, 1, SystemLock); }
    EXPECT_NE(support::setOf("/tmp", other), -1);
  }
  EXPECT_EQ(support::setOf("/tmp", other), -1);
}

TEST_F(SemaphoreLockTest, KilledProcessReturnsItsSlots) {
  support::Child holder([] {
    OVNSemaphoreLock theirs(kNumber, 255, SystemLock);
    theirs.AcquireLock();
    theirs.AcquireLock();
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return lock.getCurrentLockCount() == 253; }));
  holder.kill();
  holder.wait();
  EXPECT_FALSE(lock.isLocked());
  EXPECT_EQ(support::valueOf(set(), 1), 1);
}

TEST(UserSemaphoreLock, KeyPathIsTheHomeFolder) {
  const OVNSemaphoreLock lock(kNumber, 2, UserLock);
  EXPECT_NE(support::setOf(support::ownHome(), kNumber), -1);
  EXPECT_EQ(support::setOf("/tmp", kNumber), -1);
  EXPECT_EQ(lock.getCurrentLockCount(), 2);
}

TEST(UserSemaphoreLock, ReturnsFalseWithoutHome) {
  const support::PasswordDatabase empty("");
  OVNSemaphoreLock lock(kNumber, 2, UserLock);
  EXPECT_FALSE(lock.AcquireLock());
  EXPECT_FALSE(lock.isLocked());
  EXPECT_TRUE(lock.releaseLock());
  EXPECT_EQ(lock.getCurrentLockCount(), 0);
}

TEST(UserSemaphoreLock, UnknownTypeMeansSystemLock) {
  const OVNSemaphoreLock lock(kNumber, 2, static_cast<LockType>(7));
  EXPECT_NE(support::setOf("/tmp", kNumber), -1);
}

}  // namespace
