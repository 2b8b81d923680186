#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "logging/BinaryLock.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Output.h"
#include "tests/support/SemaphoreOperations.h"
#include "tests/support/Semaphores.h"

namespace {

using tarn::BinaryLock;

constexpr int kProject = 11;
constexpr int kReferences = 0;
constexpr int kMutex = 1;
constexpr int kMaxCount = 32767;

class BinaryLockFaultTest : public testing::Test {
 protected:
  bool create(BinaryLock& lock) const { return lock.create(folder.path(), kProject); }
  int set() const { return support::setOf(folder.path(), kProject); }
  void removeSet() const { ::semctl(set(), 0, IPC_RMID); }

  const support::TemporaryFolder folder;
  const support::SetRemover remover{folder.path(), kProject};
  BinaryLock lock;
};

TEST_F(BinaryLockFaultTest, WaitEndsWhileAStoppedProcessHolds) {
  ASSERT_TRUE(create(lock));
  support::Child holder([&] {
    BinaryLock theirs;
    return create(theirs) && theirs.wait() ? ::raise(SIGSTOP) : 1;
  });
  ASSERT_TRUE(support::becomesTrue([&] { return support::valueOf(set(), kMutex) == 0; }));
  EXPECT_FALSE(lock.wait());
  EXPECT_FALSE(lock.wait());
  holder.kill();
  holder.wait();
  EXPECT_TRUE(lock.wait());
  lock.release();
}

TEST_F(BinaryLockFaultTest, AnAbandonedSetGetsItsFirstValue) {
  ASSERT_NE(::semget(::ftok(folder.path().c_str(), kProject), 2, IPC_CREAT | 0666), -1);
  ASSERT_TRUE(create(lock));
  EXPECT_TRUE(lock.signal());
  lock.release();
}

TEST_F(BinaryLockFaultTest, WaitCreatesARemovedSetAgain) {
  ASSERT_TRUE(create(lock));
  removeSet();
  EXPECT_TRUE(lock.wait());
  EXPECT_EQ(lock.getReferenceCount(), 1);
  EXPECT_TRUE(lock.release());
  EXPECT_TRUE(lock.finalize());
  EXPECT_EQ(set(), -1);
}

TEST_F(BinaryLockFaultTest, ABlockedWaitSurvivesTheRemoval) {
  ASSERT_TRUE(create(lock));
  ASSERT_TRUE(lock.wait());
  support::Child other([&] {
    BinaryLock theirs;
    return create(theirs) && theirs.wait() && theirs.release() && theirs.finalize() ? 0 : 1;
  });
  ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(set(), kMutex) == 1; }));
  removeSet();
  EXPECT_EQ(other.wait(), 0);
  EXPECT_FALSE(lock.release());
}

TEST_F(BinaryLockFaultTest, ThreadsExcludeEachOtherAfterTheRemoval) {
  ASSERT_TRUE(create(lock));
  ASSERT_TRUE(lock.wait());
  removeSet();
  std::atomic<bool> releases{false}, hasReleased{false};
  std::thread other([&] {
    EXPECT_TRUE(lock.wait());
    EXPECT_TRUE(releases);
    EXPECT_TRUE(support::becomesTrue([&] { return hasReleased.load(); }));
    EXPECT_EQ(support::valueOf(set(), kMutex), 0);
    lock.release();
    EXPECT_EQ(support::valueOf(set(), kMutex), 1);
  });
  EXPECT_TRUE(support::becomesTrue([&] { return set() != -1 && support::valueOf(set(), kMutex) == 0; }));
  releases = true;
  lock.release();
  hasReleased = true;
  other.join();
}

TEST_F(BinaryLockFaultTest, ThreadsCreateARemovedSetOnce) {
  for (int round = 0; round < 50; ++round) {
    ASSERT_TRUE(create(lock));
    removeSet();
    const auto use = [&] {
      EXPECT_TRUE(lock.wait());
      lock.release();
    };
    std::thread one(use);
    std::thread other(use);
    one.join();
    other.join();
    EXPECT_EQ(lock.getReferenceCount(), 1);
    ASSERT_TRUE(lock.finalize());
  }
  EXPECT_EQ(set(), -1);
}

TEST_F(BinaryLockFaultTest, AFalseReportOfRemovalCountsOnce) {
  ASSERT_TRUE(create(lock));
  const support::FailingOperation failing(kMutex, -1, EIDRM);
  EXPECT_TRUE(lock.wait());
  EXPECT_EQ(lock.getReferenceCount(), 1);
  lock.release();
}

TEST_F(BinaryLockFaultTest, AFullCountOpensTheLockUncounted) {
  BinaryLock first;
  ASSERT_TRUE(create(first));
  support::setValueOf(set(), kReferences, kMaxCount);
  ASSERT_TRUE(create(lock));
  EXPECT_TRUE(lock.wait());
  EXPECT_TRUE(lock.release());
  EXPECT_EQ(lock.getReferenceCount(), kMaxCount);
  EXPECT_TRUE(lock.finalize());
  EXPECT_EQ(first.getReferenceCount(), kMaxCount);
  EXPECT_TRUE(first.finalize());
  EXPECT_EQ(support::valueOf(set(), kReferences), kMaxCount - 1);
}

TEST_F(BinaryLockFaultTest, AForkedProcessClosesOnlyItsOwn) {
  ASSERT_TRUE(create(lock));
  EXPECT_EQ(support::inChild([&] { return lock.finalize() && lock.getReferenceCount() == -1 ? 0 : 1; }), 0);
  EXPECT_EQ(lock.getReferenceCount(), 1);
}

TEST_F(BinaryLockFaultTest, FirstWaitCountsAForkedProcess) {
  ASSERT_TRUE(create(lock));
  EXPECT_EQ(support::inChild([&] {
              if (!lock.wait() || lock.getReferenceCount() != 2) return 1;
              if (!lock.release() || !lock.wait() || lock.getReferenceCount() != 2) return 2;
              return lock.release() && lock.finalize() ? 0 : 3;
            }),
            0);
  EXPECT_EQ(lock.getReferenceCount(), 1);
}

TEST_F(BinaryLockFaultTest, AForkedProcessThatEndsIsNotCounted) {
  ASSERT_TRUE(create(lock));
  EXPECT_EQ(support::inChild([&]() -> int { ::_exit(lock.wait() && lock.release() ? 0 : 1); }), 0);
  EXPECT_EQ(lock.getReferenceCount(), 1);
}

TEST_F(BinaryLockFaultTest, AForkDuringALineBlocksNoChild) {
  ASSERT_TRUE(create(lock));
  ASSERT_TRUE(lock.wait());
  support::Child child([&] { return lock.wait() && lock.release() && lock.finalize() ? 0 : 1; });
  ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(set(), kMutex) == 1; }));
  lock.release();
  EXPECT_EQ(child.wait(), 0);
}

TEST_F(BinaryLockFaultTest, AFailedReleaseRemovesTheSet) {
  ASSERT_TRUE(create(lock));
  ASSERT_TRUE(lock.wait());
  support::Child waiter([&] {
    BinaryLock theirs;
    return create(theirs) && theirs.wait() && theirs.release() && theirs.finalize() ? 0 : 1;
  });
  ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(set(), kMutex) == 1; }));
  const std::string output = support::outputOf([&] {
    const support::FailingOperation failing(kMutex, +1, EIO, 2);
    EXPECT_FALSE(lock.release());
  });
  EXPECT_EQ(waiter.wait(), 0);
  EXPECT_NE(output.find("could not be released"), std::string::npos);
  EXPECT_TRUE(lock.wait());
  EXPECT_TRUE(lock.release());
}

TEST_F(BinaryLockFaultTest, AFailedReleaseIsReportedOnce) {
  ASSERT_TRUE(create(lock));
  const std::string output = support::outputOf([&] {
    const support::FailingOperation failing(kMutex, +1, EIO, 2);
    for (int i = 0; i < 2; ++i) {
      EXPECT_TRUE(lock.wait());
      EXPECT_FALSE(lock.release());
    }
  });
  EXPECT_EQ(output.find("could not be released"), output.rfind("could not be released"));
}

}  // namespace
