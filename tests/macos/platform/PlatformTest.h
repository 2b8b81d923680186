// The fixture of the tests of platform/macos: every call of the doubles succeeds at first, and a test fails if it does
// not release the objects that it created.

#pragma once

#include <gmock/gmock-more-matchers.h>
#include <gtest/gtest.h>

#include "tests/macos/doubles/SystemDoubles.h"
#include "tests/support/Child.h"

namespace macos_test {

class PlatformTest : public testing::Test {
 protected:
  PlatformTest() { doubles::reset(); }
  ~PlatformTest() override { EXPECT_THAT(doubles::unreleasedObjects(), testing::IsEmpty()); }
};

// Waits until all children have ended and all task objects are released. Returns false after a timeout.
inline bool waitForTasks() {
  return support::becomesTrue([] { return !support::hasChildren() && doubles::unreleasedObjects().empty(); });
}

}  // namespace macos_test
