// A server that takes a request and never answers. Waits for a whole minute, which is why it stands alone.

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

class StalledServerTest : public EndToEndTest {};

TEST_F(StalledServerTest, ALoadWithoutDataForSixtySecondsEndsTheRun) {
  std::chrono::steady_clock::time_point lastData;
  site.serve("/signin", [&](const Request&) {
    lastData = std::chrono::steady_clock::now();  // the load's clock cannot be wound for it any sooner
    return redirectTo(site.address("/stalled"));
  });
  site.hold("/stalled");
  start();
  untilAsked("/stalled");
  ASSERT_TRUE(examples::waitUntil([this] { return run->ended(); }, std::chrono::seconds(60) + kPatience));
  EXPECT_GE(std::chrono::steady_clock::now() - lastData, std::chrono::seconds(59));
  EXPECT_EQ(message(), kLoadFailed);
  EXPECT_TRUE(logSays("didFailProvisionalLoadWithError for URL " + site.address("/stalled")));
  EXPECT_TRUE(logSays("didFailProvisionalLoadWithError Error code -1001"));
}

}  // namespace
}  // namespace endtoend
