#include "platform/EventLoop.h"

#import <Foundation/Foundation.h>

#include <atomic>
#include <functional>
#include <thread>

#include "platform/Desktop.h"
#include "platform/Machine.h"
#include "platform/Processes.h"
#include "platform/Text.h"
#include "tests/macos/platform/PlatformTest.h"

namespace {

std::atomic<int> deallocated{0};

}  // namespace

@interface CountedObject : NSObject
@end

@implementation CountedObject

- (void)dealloc {
  ++deallocated;
  [super dealloc];
}

@end

namespace {

class AutoreleasePoolTest : public macos_test::PlatformTest {
 protected:
  AutoreleasePoolTest() { deallocated = 0; }

  static void autoreleaseObject() { [[[CountedObject alloc] init] autorelease]; }
};

TEST_F(AutoreleasePoolTest, ReleasesItsObjectsWhenClosed) {
  void* const pool = platform::openAutoreleasePool();
  ASSERT_NE(pool, nullptr);
  autoreleaseObject();
  EXPECT_EQ(deallocated, 0);
  platform::closeAutoreleasePool(pool);
  EXPECT_EQ(deallocated, 1);
}

TEST_F(AutoreleasePoolTest, AnInnerScopeKeepsTheObjectsOutsideIt) {
  const platform::AutoreleaseScope outer;
  autoreleaseObject();
  {
    const platform::AutoreleaseScope inner;
    autoreleaseObject();
  }
  EXPECT_EQ(deallocated, 1);
}

TEST_F(AutoreleasePoolTest, EachThreadHasItsOwn) {
  const platform::AutoreleaseScope outer;
  std::thread([] {
    const platform::AutoreleaseScope inner;
    autoreleaseObject();
  }).join();
  EXPECT_EQ(deallocated, 1);
}

TEST_F(AutoreleasePoolTest, ClosingANullPoolIsAllowed) {
  platform::closeAutoreleasePool(nullptr);
}

// Every function releases its temporary objects before it returns, so that the caller needs no pool.
class AutoreleasedObjectsTest : public macos_test::PlatformTest {
 protected:
  void TearDown() override { EXPECT_TRUE(macos_test::waitForTasks()); }

  // Returns how many objects a call leaves in the caller's pool.
  static NSUInteger leftBy(const std::function<void()>& call) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    call();
    const NSUInteger left = [pool autoreleaseCount];
    [pool release];
    return left;
  }
};

TEST_F(AutoreleasedObjectsTest, AreReleasedByTheDesktop) {
  EXPECT_EQ(leftBy([] { platform::openUrl("https://h/"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::openUrl("unknown-scheme:a"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::postToAllSessions("org.x.Stop", "org.x.Agent"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::postToAllSessions("org.x.Stop", "\xFF"); }), 0u);
}

TEST_F(AutoreleasedObjectsTest, AreReleasedByTheRunLoop) {
  EXPECT_EQ(leftBy([] { platform::runLoopFor(std::chrono::milliseconds(1)); }), 0u);
}

TEST_F(AutoreleasedObjectsTest, AreReleasedByTheLauncher) {
  EXPECT_EQ(leftBy([] { platform::launchInForeground("/bin/true", {"a", "b"}); }), 0u);
  EXPECT_EQ(leftBy([] { platform::launchInForeground("/bin/true", {"a", "\xFF"}); }), 0u);
  doubles::failCall("LSOpenApplication", -10810);
  EXPECT_EQ(leftBy([] { platform::launchInForeground("/bin/true", {"a", "b"}); }), 0u);
}

TEST_F(AutoreleasedObjectsTest, AreReleasedByTasks) {
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

TEST_F(AutoreleasedObjectsTest, AreReleasedByTheMainBundle) {
  EXPECT_EQ(leftBy([] { platform::bundlePath(); }), 0u);
  EXPECT_EQ(leftBy([] { platform::executablePath(); }), 0u);
  EXPECT_EQ(leftBy([] { platform::executableArchitectures(); }), 0u);
}

TEST_F(AutoreleasedObjectsTest, AreReleasedByTextFunctions) {
  EXPECT_EQ(leftBy([] { platform::canonicallyComposed("e\xCC\x81"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::canonicallyComposed("\xFF"); }), 0u);
  EXPECT_EQ(leftBy([] { platform::randomUuidText(); }), 0u);
}

}  // namespace
