#include "platform/SemaphoreSet.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Semaphores.h"

namespace {

using platform::SemaphoreSet;

class SemaphoreSetTest : public testing::Test {
 protected:
  ~SemaphoreSetTest() override { set.remove(); }

  const support::TemporaryFolder folder;
  const key_t key = SemaphoreSet::keyFor(folder.path(), 7);
  const int id = SemaphoreSet::create(key, 2);
  const SemaphoreSet set{id};
};

std::atomic<int>* caughtSignals = nullptr;

void waitThroughSignals(std::atomic<int>& caught) {
  caughtSignals = &caught;
  struct sigaction action {};
  action.sa_handler = [](int) { ++*caughtSignals; };
  ::sigaction(SIGUSR1, &action, nullptr);
}

TEST_F(SemaphoreSetTest, APathThatDoesNotExistHasNoKey) {
  EXPECT_EQ(SemaphoreSet::keyFor(folder / "missing", 7), -1);
}

TEST_F(SemaphoreSetTest, OnlyTheLowEightBitsOfTheNumberEnterTheKey) {
  EXPECT_EQ(SemaphoreSet::keyFor(folder.path(), 256 + 7), key);
  EXPECT_NE(SemaphoreSet::keyFor(folder.path(), 8), key);
}

TEST_F(SemaphoreSetTest, ASetIsFoundOnlyWhileItExists) {
  EXPECT_EQ(SemaphoreSet::find(key), id);
  EXPECT_TRUE(set.remove());
  EXPECT_EQ(SemaphoreSet::find(key), -1);
}

TEST_F(SemaphoreSetTest, AllMembersOfANewSetAreZero) {
  EXPECT_EQ(set.value(0), 0);
  EXPECT_EQ(set.value(1), 0);
}

TEST_F(SemaphoreSetTest, AChangeThatMayNotWaitFailsAtOnce) {
  EXPECT_FALSE(set.change(0, -1, IPC_NOWAIT));
  EXPECT_EQ(errno, EAGAIN);
}

TEST_F(SemaphoreSetTest, ARemovedSetSaysSo) {
  set.remove();
  EXPECT_FALSE(set.take(0));
  EXPECT_TRUE(SemaphoreSet::wasRemoved(errno));
}

TEST_F(SemaphoreSetTest, ASleepingWaitEndsWithTheSet) {
  support::Child waiting([&] { return set.take(0) ? 1 : SemaphoreSet::wasRemoved(errno) ? 0 : 2; });
  ASSERT_TRUE(support::comesTrue([&] { return support::sleepersOn(id, 0) == 1; }));
  set.remove();
  EXPECT_EQ(waiting.wait(), 0);
}

TEST_F(SemaphoreSetTest, AWaitGoesOnAfterASignal) {
  if (!support::signalsInterrupt) GTEST_SKIP() << "the sanitizer holds signals back";
  const support::Shared<std::atomic<int>> caught;
  support::Child waiting([&] {
    waitThroughSignals(*caught);
    return set.take(0) ? 0 : 1;
  });
  for (int signals = 0; signals < 5; ++signals) {
    ASSERT_TRUE(support::comesTrue([&] { return support::sleepersOn(id, 0) == 1; }));
    waiting.send(SIGUSR1);
    ASSERT_TRUE(support::comesTrue([&] { return *caught == signals + 1; }));
  }
  set.change(0, +1, 0);
  EXPECT_EQ(waiting.wait(), 0);
}

TEST_F(SemaphoreSetTest, WhatAProcessTookIsGivenBackWhenItIsKilled) {
  set.setValue(0, 1);
  support::Child holder([&] {
    set.take(0);
    return ::pause();
  });
  ASSERT_TRUE(support::comesTrue([&] { return set.value(0) == 0; }));
  holder.kill();
  EXPECT_TRUE(set.take(0));
}

TEST_F(SemaphoreSetTest, WhatASleeperTookIsGivenBackToo) {
  support::Child holder([&] {
    set.take(0);
    return ::pause();
  });
  ASSERT_TRUE(support::comesTrue([&] { return support::sleepersOn(id, 0) == 1; }));
  set.change(0, +1, 0);
  ASSERT_EQ(set.value(0), 0);
  holder.kill();
  holder.wait();
  EXPECT_EQ(set.value(0), 1);
}

TEST_F(SemaphoreSetTest, OrdersThreadsOfOneProcess) {
  set.setValue(0, 1);
  long counted = 0;
  const auto count = [&] {
    for (int i = 0; i < 20000; ++i) {
      set.take(0);
      ++counted;
      set.change(0, +1, SEM_UNDO);
    }
  };
  std::thread one(count);
  std::thread other(count);
  one.join();
  other.join();
  EXPECT_EQ(counted, 40000);
}

}  // namespace
