// A test of platform/macos over the doubles of the system: it begins with none of their calls made or failing, and
// fails when something that they made is not given back.

#pragma once

#include <gmock/gmock-more-matchers.h>
#include <gtest/gtest.h>

#include "tests/macos/doubles/SystemCalls.h"

namespace macos_test {

class SystemTest : public testing::Test {
 protected:
  SystemTest() { doubles::forgetCalls(); }
  ~SystemTest() override { EXPECT_THAT(doubles::unsettled(), testing::IsEmpty()); }
};

}  // namespace macos_test
