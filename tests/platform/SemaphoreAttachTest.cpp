// What `SemaphoreSet::attach` does with the set of a user's own lock that another process has created.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "platform/SemaphoreSet.h"
#include "platform/UniqueFd.h"
#include "tests/support/Barrier.h"
#include "tests/support/Child.h"
#include "tests/support/FakeConsoleUser.h"
#include "tests/support/Files.h"
#include "tests/support/Semaphores.h"

namespace {

using platform::SemaphoreSet;

constexpr int kCount = 0;
constexpr int kMutex = 1;

class OwnLockTest : public testing::Test {
 protected:
  ~OwnLockTest() override { SemaphoreSet(SemaphoreSet::find(key)).remove(); }

  bool attach() {
    SemaphoreSet::AttachSteps steps{2, [](const SemaphoreSet& set) { return set.setValue(kMutex, 1); },
                                    [](const SemaphoreSet& set) { return set.change(kCount, +1, 0); }};
    steps.mutex = kMutex;
    return SemaphoreSet::attach(folder.path(), key, steps, id);
  }

  const support::TemporaryFolder folder;
  const key_t key = SemaphoreSet::keyFor(folder.path(), 7);
  int id = -1;
};

TEST_F(OwnLockTest, ACancellationWaitsForTheEndOfAttach) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer reports the stack of a thread that ends by cancellation";
#endif
  bool attached = false;
  std::thread thread([&] {
    ::pthread_cancel(::pthread_self());
    attached = attach();
    ::pthread_testcancel();
    attached = false;
  });
  thread.join();
  EXPECT_TRUE(attached);
}

// The set of a process that was killed right after it had created the set.
class AbandonedSetTest : public OwnLockTest {
 protected:
  const SemaphoreSet set{SemaphoreSet::create(key, 2)};
};

TEST_F(AbandonedSetTest, GetsItsFirstValue) {
  ASSERT_TRUE(attach());
  EXPECT_EQ(set.value(kMutex), 1);
  EXPECT_EQ(set.value(kCount), 1);
}

TEST_F(AbandonedSetTest, FreesAProcessThatWaits) {
  support::Child waiting([&] { return set.change(kMutex, -1, SEM_UNDO) ? 0 : 1; });
  ASSERT_TRUE(support::becomesTrue([&] { return support::waitersOn(SemaphoreSet::find(key), kMutex) == 1; }));
  ASSERT_TRUE(attach());
  EXPECT_EQ(waiting.wait(), 0);
}

TEST_F(AbandonedSetTest, GetsItsFirstValueOnce) {
  support::Barrier barrier(8);
  std::vector<support::Child> processes;
  for (int i = 0; i < 8; ++i) {
    processes.emplace_back([&] {
      barrier.spin();
      return attach() ? 0 : 1;
    });
  }
  for (support::Child& process : processes)
    EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(set.value(kMutex), 1);
}

TEST_F(AbandonedSetTest, AHeldMutexIsNotRaised) {
  set.setValue(kMutex, 1);
  set.change(kMutex, -1, 0);
  ASSERT_TRUE(attach());
  EXPECT_EQ(set.value(kMutex), 0);
}

TEST_F(AbandonedSetTest, AUsedSetIsNotRaised) {
  set.change(kCount, +1, 0);
  ASSERT_TRUE(attach());
  EXPECT_EQ(set.value(kMutex), 0);
}

TEST_F(AbandonedSetTest, IsNotRaisedWithoutThePathLock) {
  const platform::UniqueFd file(::open(folder.path().c_str(), O_RDONLY));
  ASSERT_EQ(::flock(file.get(), LOCK_EX), 0);
  ASSERT_TRUE(attach());
  EXPECT_EQ(set.value(kMutex), 0);
}

TEST_F(OwnLockTest, ASetWithTooFewMembersIsRefused) {
  SemaphoreSet::create(key, 1);
  EXPECT_FALSE(attach());
  EXPECT_EQ(id, -1);
}

class ForeignSetTest : public OwnLockTest {
 protected:
  static constexpr uid_t kUser = 4711;

  ForeignSetTest() { support::fakeConsoleUser = std::nullopt; }
  ~ForeignSetTest() override { support::fakeConsoleUser = std::nullopt; }

  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can change its user";
  }

  static int asUser(uid_t user, const std::function<bool()>& body) {
    return support::Child([&] { return ::setuid(user) == 0 && body() ? 0 : 1; }).wait();
  }

  void createAs(uid_t user) {
    ASSERT_EQ(asUser(user,
                     [&] {
                       const SemaphoreSet set(SemaphoreSet::create(key, 2));
                       return set.setValue(kMutex, 1);
                     }),
              0);
  }
};

TEST_F(ForeignSetTest, ASetOfAnotherUserIsRefused) {
  createAs(kUser);
  EXPECT_FALSE(attach());
  EXPECT_EQ(errno, EPERM);
  EXPECT_EQ(id, -1);
}

TEST_F(ForeignSetTest, ASetGivenAwayIsRefused) {
  createAs(kUser);
  ASSERT_EQ(asUser(kUser, [&] { return support::giveSetTo(SemaphoreSet::find(key), 0); }), 0);
  EXPECT_FALSE(attach());
}

TEST_F(ForeignSetTest, ASetOfTheConsoleUserIsUsed) {
  createAs(kUser);
  support::fakeConsoleUser = kUser;
  EXPECT_TRUE(attach());
}

TEST_F(ForeignSetTest, ASetOfTheSameUserIsUsed) {
  createAs(kUser);
  EXPECT_EQ(asUser(kUser, [this] { return attach(); }), 0);
}

TEST_F(ForeignSetTest, ASetOfRootIsUsed) {
  ASSERT_TRUE(attach());
  EXPECT_EQ(asUser(kUser, [this] { return attach(); }), 0);
}

}  // namespace
