#include "app/gtk/page/MainFrame.h"

#include <gtest/gtest.h>

#include "app/gtk/Glib.h"

namespace {

bool isAt(const MainFrame& frame, const char* address) {
  const Owned<WebKitSecurityOrigin, webkit_security_origin_unref> origin(webkit_security_origin_new_for_uri(address));
  return frame.isAt(origin.get());
}

class MainFrameTest : public testing::Test {
 protected:
  MainFrameTest() {
    frame.committed("https://shown.example/page");
    frame.requested("https://next.example/page");
  }

  MainFrame frame;
};

TEST_F(MainFrameTest, IsAtThePageShownAndTheOneRequested) {
  EXPECT_TRUE(isAt(frame, "https://shown.example/"));
  EXPECT_TRUE(isAt(frame, "https://next.example/"));
  EXPECT_FALSE(isAt(frame, "https://next.example:444/"));
}

TEST_F(MainFrameTest, LeavesAPageThatFailed) {
  frame.failed("https://next.example/page");
  EXPECT_TRUE(isAt(frame, "https://shown.example/"));
  EXPECT_FALSE(isAt(frame, "https://next.example/"));
}

TEST_F(MainFrameTest, KeepsTheRequestThatReplacedAFailedOne) {
  frame.requested("https://later.example/page");
  frame.failed("https://next.example/page");
  EXPECT_TRUE(isAt(frame, "https://later.example/"));
}

}  // namespace
