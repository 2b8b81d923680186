// A server that takes a request and never answers. Waits for a whole minute, which is why it stands alone.

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

class StalledServerTest : public EndToEndTest {};

TEST_F(StalledServerTest, ALoadWithoutDataForSixtySecondsEndsTheRun) {
  site.hold("/signin");
  start();
  untilAsked("/signin");
  const auto asked = std::chrono::steady_clock::now();
  ASSERT_TRUE(examples::waitUntil([this] { return run->ended(); }, std::chrono::seconds(90)));
  EXPECT_GE(std::chrono::steady_clock::now() - asked, std::chrono::seconds(59));
  EXPECT_EQ(message(), kLoadFailed);
  EXPECT_TRUE(logSays("didFailProvisionalLoadWithError for URL " + site.address("/signin")));
  EXPECT_TRUE(logSays("didFailProvisionalLoadWithError Error code -1001"));
}

}  // namespace
}  // namespace endtoend
