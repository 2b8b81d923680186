// What a function makes for itself is gone when it returns: nothing of it waits in its caller's pool.

#import <Foundation/Foundation.h>

#include <functional>

#include "platform/Desktop.h"
#include "platform/EventLoop.h"
#include "platform/Machine.h"
#include "platform/Processes.h"
#include "platform/Text.h"
#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Child.h"

namespace {

class ScopesTest : public macos_test::SystemTest {
 protected:
  void TearDown() override {
    EXPECT_TRUE(support::comesTrue([] { return !support::hasChildren() && doubles::unsettled().empty(); }));
  }

  static NSUInteger leftBy(const std::function<void()>& call) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    call();
    const NSUInteger left = [pool autoreleaseCount];
    [pool release];
    return left;
  }
};

TEST_F(ScopesTest, NothingIsLeftByTheDesktop) {
  EXPECT_EQ(leftBy([] { platform::openUrl("https://h/"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::openUrl("nobody-such:a"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::postToAllSessions("org.x.Stop", "org.x.Agent"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::postToAllSessions("org.x.Stop", "\xFF"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::runLoopFor(std::chrono::milliseconds(1)); }), 0u);
}

TEST_F(ScopesTest, NothingIsLeftByTheLauncher) {
  EXPECT_EQ(leftBy([] { platform::launchInForeground("/bin/true", {"a", "b"}); }), 0u);
  EXPECT_EQ(leftBy([] { platform::launchInForeground("/bin/true", {"a", "\xFF"}); }), 0u);
  doubles::failCall("LSOpenApplication", -10810);
  EXPECT_EQ(leftBy([] { platform::launchInForeground("/bin/true", {"a", "b"}); }), 0u);
}

TEST_F(ScopesTest, NothingIsLeftByTasks) {
  platform::Task task;
  task.program = "/bin/true";
  task.arguments = {"a"};
  EXPECT_EQ(leftBy([&] { platform::runTask(task); }), 0u);
  EXPECT_EQ(leftBy([&] { platform::startTask(task); }), 0u);
  task.silent = true;
  EXPECT_EQ(leftBy([&] { platform::runTask(task); }), 0u);
  task.program = "/no/such";
  EXPECT_EQ(leftBy([&] { platform::runTask(task); }), 0u);
}

TEST_F(ScopesTest, NothingIsLeftByTheRunningProgram) {
  EXPECT_EQ(leftBy([] { platform::bundlePath(); }), 0u);
  EXPECT_EQ(leftBy([] { platform::executablePath(); }), 0u);
  EXPECT_EQ(leftBy([] { platform::executableArchitectures(); }), 0u);
}

TEST_F(ScopesTest, NothingIsLeftByTexts) {
  EXPECT_EQ(leftBy([] { platform::canonicallyComposed("e\xCC\x81"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::canonicallyComposed("\xFF"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::randomUuidText(); }), 0u);
}

}  // namespace
