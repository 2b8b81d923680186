#include "app/gtk/page/FreshPress.h"

#include <gtest/gtest.h>

namespace {

TEST(FreshPressTest, PermitsNothingBeforeTheFirstPress) {
  FreshPress press;
  EXPECT_FALSE(press.take(0));
}

TEST(FreshPressTest, PermitsOneActionForEachPress) {
  FreshPress press;
  press.pressed(100);
  EXPECT_TRUE(press.take(200));
  EXPECT_FALSE(press.take(300));
  press.pressed(400);
  EXPECT_TRUE(press.take(500));
}

TEST(FreshPressTest, ExpiresAfterFiveSeconds) {
  FreshPress press;
  press.pressed(100);
  EXPECT_FALSE(press.take(5'000'101));
  EXPECT_TRUE(press.take(5'000'100));
}

}  // namespace
