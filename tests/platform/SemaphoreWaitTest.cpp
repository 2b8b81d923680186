#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>

#include "platform/SemaphoreSet.h"
#include "platform/WaitLimit.h"
#include "tests/support/Child.h"
#include "tests/support/Interruptions.h"
#include "tests/support/Semaphores.h"

namespace {

using platform::SemaphoreSet;
using platform::WaitLimit;

TEST(WaitLimitTest, WaitsWithoutAScopeShareNoDeadline) {
  const auto first = WaitLimit::deadline();
  EXPECT_GT(first, WaitLimit::Clock::now());
  while (WaitLimit::Clock::now() + std::chrono::seconds(2) <= first) {
  }
  EXPECT_GT(WaitLimit::deadline(), first);
}

TEST(WaitLimitTest, NestedScopesShareOneDeadline) {
  const WaitLimit outer;
  const auto first = WaitLimit::deadline();
  {
    const WaitLimit inner;
    EXPECT_EQ(WaitLimit::deadline(), first);
  }
  EXPECT_EQ(WaitLimit::deadline(), first);
}

TEST(WaitLimitTest, TheNextScopeHasANewDeadline) {
  WaitLimit::Clock::time_point first;
  {
    const WaitLimit scope;
    first = WaitLimit::deadline();
  }
  const WaitLimit scope;
  EXPECT_GT(WaitLimit::deadline(), first);
}

// A set whose member 0 is 0 until another process increases it.
class SemaphoreWaitTest : public testing::Test {
 protected:
  ~SemaphoreWaitTest() override { set.remove(); }

  const int id = SemaphoreSet::create(IPC_PRIVATE, 2);
  const SemaphoreSet set{id};
};

TEST_F(SemaphoreWaitTest, ATakeEndsAtTheDeadline) {
  EXPECT_FALSE(set.take(0));
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_EQ(set.value(0), 0);
}

TEST_F(SemaphoreWaitTest, SignalsDoNotExtendTheWait) {
  const support::Interruptions interruptions;
  EXPECT_FALSE(set.take(0));
  EXPECT_EQ(errno, EAGAIN);
}

// Each wait of 2 seconds would take 400 seconds.
TEST_F(SemaphoreWaitTest, OnlyTheFirstTakeWaitsLong) {
  EXPECT_FALSE(set.take(0));
  const auto start = WaitLimit::Clock::now();
  for (int i = 0; i < 200; ++i)
    EXPECT_FALSE(set.take(0));
  EXPECT_LT(WaitLimit::Clock::now() - start, std::chrono::seconds(100));
}

TEST_F(SemaphoreWaitTest, AStuckSetShortensWaitsForOtherSets) {
  const SemaphoreSet other(SemaphoreSet::create(IPC_PRIVATE, 1));
  EXPECT_FALSE(set.take(0));
  const auto start = WaitLimit::Clock::now();
  for (int i = 0; i < 200; ++i)
    EXPECT_FALSE(other.take(0));
  EXPECT_LT(WaitLimit::Clock::now() - start, std::chrono::seconds(100));
  other.remove();
}

// The second wait is long again: it ends when the other process has seen it and increases the member.
TEST_F(SemaphoreWaitTest, ATakeEndsTheShortWaits) {
  EXPECT_FALSE(set.take(0));
  set.setValue(0, 1);
  ASSERT_TRUE(set.take(0));
  const auto start = WaitLimit::Clock::now();
  EXPECT_FALSE(set.take(0));
  EXPECT_GE(WaitLimit::Clock::now() - start, std::chrono::seconds(1));
}

TEST_F(SemaphoreWaitTest, ARemovedSetEndsTheShortWaits) {
  const SemaphoreSet removed(SemaphoreSet::create(IPC_PRIVATE, 1));
  EXPECT_FALSE(removed.take(0));
  removed.remove();
  EXPECT_FALSE(removed.take(0));
  const auto start = WaitLimit::Clock::now();
  EXPECT_FALSE(set.take(0));
  EXPECT_GE(WaitLimit::Clock::now() - start, std::chrono::seconds(1));
}

TEST_F(SemaphoreWaitTest, DetachFromZeroEndsAtTheDeadline) {
  EXPECT_FALSE(set.detach(0));
  EXPECT_EQ(errno, EAGAIN);
  set.setValue(0, 1);
  EXPECT_TRUE(set.detach(0));
  EXPECT_EQ(set.value(0), 0);
}

}  // namespace
