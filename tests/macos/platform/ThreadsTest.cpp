#include "platform/Machine.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <thread>

#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Child.h"

namespace {

std::uint64_t systemsThreadId() {
  return static_cast<std::uint64_t>(::syscall(SYS_gettid));
}

using ThreadsTest = macos_test::SystemTest;

TEST_F(ThreadsTest, HaveTheNumberThatTheSystemGaveThem) {
  EXPECT_EQ(platform::currentThreadId(), systemsThreadId());
  std::thread([] { EXPECT_EQ(platform::currentThreadId(), systemsThreadId()); }).join();
}

TEST_F(ThreadsTest, HaveANewNumberAfterAFork) {
  (void)platform::currentThreadId();
  EXPECT_EQ(support::inChild([] { return platform::currentThreadId() == systemsThreadId() ? 0 : 1; }), 0);
}

}  // namespace
