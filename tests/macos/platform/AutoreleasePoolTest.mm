#include "platform/EventLoop.h"

#import <Foundation/Foundation.h>

#include <thread>

#include "tests/macos/platform/SystemTest.h"

@interface Canary : NSObject
@end

@implementation Canary

- (void)dealloc {
  doubles::noteCall("gone");
  [super dealloc];
}

@end

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AutoreleasePoolTest : public macos_test::SystemTest {
 protected:
  static void autoreleaseOne() { [[[Canary alloc] init] autorelease]; }
};

TEST_F(AutoreleasePoolTest, ReleasesAtItsEndWhatWasAutoreleasedInIt) {
  void* const pool = platform::openAutoreleasePool();
  ASSERT_NE(pool, nullptr);
  autoreleaseOne();
  EXPECT_THAT(doubles::takenCalls(), IsEmpty());
  platform::closeAutoreleasePool(pool);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("gone"));
}

TEST_F(AutoreleasePoolTest, AnInnerScopeLeavesTheObjectsOfTheOuterOneAlone) {
  const platform::AutoreleaseScope outer;
  autoreleaseOne();
  {
    const platform::AutoreleaseScope inner;
    autoreleaseOne();
  }
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("gone"));
}

TEST_F(AutoreleasePoolTest, EveryThreadHasItsOwn) {
  const platform::AutoreleaseScope outer;
  std::thread([] {
    const platform::AutoreleaseScope inner;
    autoreleaseOne();
  }).join();
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("gone"));
}

TEST_F(AutoreleasePoolTest, NoPoolIsNotClosed) {
  platform::closeAutoreleasePool(nullptr);
}

}  // namespace
