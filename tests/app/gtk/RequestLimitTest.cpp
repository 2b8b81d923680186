#include "app/gtk/page/RequestLimit.h"

#include <gtest/gtest.h>

namespace {

TEST(RequestLimitTest, AllowsTheMaximumNumber) {
  RequestLimit limit(2);
  EXPECT_TRUE(limit.take());
  EXPECT_TRUE(limit.take());
  EXPECT_FALSE(limit.take());
  EXPECT_FALSE(limit.take());
}

TEST(RequestLimitTest, AllowsTheMaximumAgainAfterAReset) {
  RequestLimit limit(1);
  EXPECT_TRUE(limit.take());
  limit.reset();
  limit.reset();
  EXPECT_TRUE(limit.take());
  EXPECT_FALSE(limit.take());
}

}  // namespace
