#include "platform/SemaphoreSet.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "platform/UniqueFd.h"
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

std::atomic<int>* signalCount = nullptr;

void countSignals(std::atomic<int>& count) {
  signalCount = &count;
  struct sigaction action {};
  action.sa_handler = [](int) { ++*signalCount; };
  ::sigaction(SIGUSR1, &action, nullptr);
}

TEST_F(SemaphoreSetTest, AMissingPathHasNoKey) {
  EXPECT_EQ(SemaphoreSet::keyFor(folder / "missing", 7), -1);
}

TEST_F(SemaphoreSetTest, KeyUsesLowEightBitsOfNumber) {
  EXPECT_EQ(SemaphoreSet::keyFor(folder.path(), 256 + 7), key);
  EXPECT_NE(SemaphoreSet::keyFor(folder.path(), 8), key);
}

TEST_F(SemaphoreSetTest, FindsOnlyAnExistingSet) {
  EXPECT_EQ(SemaphoreSet::find(key), id);
  EXPECT_TRUE(set.remove());
  EXPECT_EQ(SemaphoreSet::find(key), -1);
}

TEST_F(SemaphoreSetTest, MembersOfANewSetAreZero) {
  EXPECT_EQ(set.value(0), 0);
  EXPECT_EQ(set.value(1), 0);
}

TEST_F(SemaphoreSetTest, ChangeWithNoWaitFailsImmediately) {
  EXPECT_FALSE(set.change(0, -1, IPC_NOWAIT));
  EXPECT_EQ(errno, EAGAIN);
}

TEST_F(SemaphoreSetTest, TakeReportsARemovedSet) {
  set.remove();
  EXPECT_FALSE(set.take(0));
  EXPECT_TRUE(SemaphoreSet::wasRemoved(errno));
}

TEST_F(SemaphoreSetTest, RemovalEndsABlockedTake) {
  support::Child waiting([&] { return set.take(0) ? 1 : SemaphoreSet::wasRemoved(errno) ? 0 : 2; });
  ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(id, 0) == 1; }));
  set.remove();
  EXPECT_EQ(waiting.wait(), 0);
}

TEST_F(SemaphoreSetTest, ASignalDoesNotEndABlockedTake) {
  if (!support::kSignalsInterrupt) GTEST_SKIP() << "the sanitizer delays signals";
  const support::Shared<std::atomic<int>> caught;
  support::Child waiting([&] {
    countSignals(*caught);
    return set.take(0) ? 0 : 1;
  });
  for (int signals = 0; signals < 5; ++signals) {
    ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(id, 0) == 1; }));
    waiting.send(SIGUSR1);
    ASSERT_TRUE(support::becomesTrue([&] { return *caught == signals + 1; }));
  }
  set.change(0, +1, 0);
  EXPECT_EQ(waiting.wait(), 0);
}

TEST_F(SemaphoreSetTest, AKilledHolderReleasesItsTake) {
  set.setValue(0, 1);
  support::Child holder([&] {
    set.take(0);
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return set.value(0) == 0; }));
  holder.kill();
  EXPECT_TRUE(set.take(0));
}

TEST_F(SemaphoreSetTest, AKilledHolderReleasesABlockedTake) {
  support::Child holder([&] {
    set.take(0);
    return ::pause();
  });
  ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(id, 0) == 1; }));
  set.change(0, +1, 0);
  ASSERT_EQ(set.value(0), 0);
  holder.kill();
  holder.wait();
  EXPECT_EQ(set.value(0), 1);
}

TEST_F(SemaphoreSetTest, ExcludesThreadsOfOneProcess) {
  set.setValue(0, 1);
  std::atomic<long> counted{0};
  const auto count = [&] {
    for (int i = 0; i < 20000; ++i) {
      set.take(0);
      counted = counted + 1;  // not one operation
      set.change(0, +1, SEM_UNDO);
    }
  };
  std::thread one(count);
  std::thread other(count);
  one.join();
  other.join();
  EXPECT_EQ(counted, 40000);
}

class SemaphoreSetAttachTest : public testing::Test {
 protected:
  ~SemaphoreSetAttachTest() override { SemaphoreSet(id).remove(); }

  bool attach() { return SemaphoreSet::attach(folder.path(), key, steps, id); }

  const support::TemporaryFolder folder;
  const key_t key = SemaphoreSet::keyFor(folder.path(), 7);
  SemaphoreSet::AttachSteps steps{2, [](const SemaphoreSet& set) { return set.setValue(1, 5); },
                                  [](const SemaphoreSet& set) { return set.change(0, +1, SEM_UNDO); }};
  int id = -1;
};

TEST_F(SemaphoreSetAttachTest, InitializesANewSetOnce) {
  ASSERT_TRUE(attach());
  const int first = id;
  SemaphoreSet(id).setValue(1, 3);
  ASSERT_TRUE(attach());
  EXPECT_EQ(id, first);
  EXPECT_EQ(SemaphoreSet(id).value(0), 2);
  EXPECT_EQ(SemaphoreSet(id).value(1), 3);
}

TEST_F(SemaphoreSetAttachTest, HoldsThePathLockDuringEveryStep) {
  const auto isLocked = [this](const SemaphoreSet&) {
    const platform::UniqueFd file(::open(folder.path().c_str(), O_RDONLY));
    return ::flock(file.get(), LOCK_EX | LOCK_NB) != 0;
  };
  steps.initialize = isLocked;
  steps.countCaller = isLocked;
  EXPECT_TRUE(attach());
}

TEST_F(SemaphoreSetAttachTest, CountsNoUserWithoutACountStep) {
  steps.countCaller = nullptr;
  ASSERT_TRUE(attach());
  EXPECT_EQ(SemaphoreSet(id).value(0), 0);
  EXPECT_EQ(SemaphoreSet(id).value(1), 5);
}

TEST_F(SemaphoreSetAttachTest, ReturnsTheSetWhoseInitializationFailed) {
  steps.initialize = [](const SemaphoreSet&) { return false; };
  EXPECT_FALSE(attach());
  EXPECT_EQ(id, SemaphoreSet::find(key));
}

TEST_F(SemaphoreSetAttachTest, FailsWhenNoSetCanBeCreated) {
  steps.members = -1;
  EXPECT_FALSE(attach());
  EXPECT_EQ(id, -1);
}

TEST_F(SemaphoreSetAttachTest, RetriesWhenTheSetIsRemoved) {
  int removals = 2;
  steps.countCaller = [&](const SemaphoreSet& set) {
    if (removals-- > 0) set.remove();
    return set.change(0, +1, SEM_UNDO);
  };
  ASSERT_TRUE(attach());
  EXPECT_EQ(SemaphoreSet(id).value(0), 1);
  EXPECT_EQ(SemaphoreSet(id).value(1), 5);
}

TEST_F(SemaphoreSetAttachTest, GivesUpAfterThreeRemovals) {
  int tries = 0;
  steps.countCaller = [&](const SemaphoreSet& set) {
    ++tries;
    set.remove();
    return set.change(0, +1, SEM_UNDO);
  };
  EXPECT_FALSE(attach());
  EXPECT_EQ(tries, 3);
}

TEST_F(SemaphoreSetAttachTest, DoesNotRetryAfterAnotherError) {
  int tries = 0;
  steps.countCaller = [&](const SemaphoreSet& set) {
    ++tries;
    return set.change(0, -1, IPC_NOWAIT);
  };
  EXPECT_FALSE(attach());
  EXPECT_EQ(tries, 1);
}

}  // namespace
