#include "tests/app/gtk/LoadTrackerTest.h"

namespace {

TEST_F(LoadTrackerTest, DropsTheFinishOfALoadNotStarted) {
  handle(Kind::kStarted, "http://site/first");
  handle(Kind::kProvisionalFailed, "http://site/first", 0, {"WebKitNetworkError", 302});
  handle(Kind::kFinished, "http://site/second");
  EXPECT_EQ(outcomes.all, (Outcomes{"failed-provisional http://site/first -999"}));
}

TEST_F(LoadTrackerTest, ReportsAnEmptyAddressAsMissing) {
  handle(Kind::kStarted);
  handle(Kind::kCommitted);
  handle(Kind::kFinished);
  EXPECT_EQ(outcomes.all, (Outcomes{"finished -"}));
}

TEST_F(LoadTrackerTest, ReportsAnEndedProcessAsFailure) {
  handle(Kind::kStarted, "http://site/page");
  handle(Kind::kCommitted, "http://site/page");
  handle(Kind::kFinished, "http://site/page");
  handle(Kind::kProcessEnded);
  EXPECT_EQ(outcomes.all, (Outcomes{"finished http://site/page", "failed http://site/page -1"}));
}

TEST_F(LoadTrackerTest, TimesOutForAnAwaitedPageNeverRequested) {
  loadSpinnerPage();
  ASSERT_TRUE(timer.runs);
  tracker.timedOut();
  EXPECT_EQ(outcomes.all, (Outcomes{"failed-provisional http://site/signin -1001"}));
}

TEST_F(LoadTrackerTest, TimesOutForAnAwaitedPageWithoutAddress) {
  tracker.awaitPage("");
  tracker.timedOut();
  EXPECT_EQ(outcomes.all, (Outcomes{"failed-provisional - -1001"}));
}

TEST_F(LoadTrackerTest, StopsTheAwaitedPagesTimerDuringAPrompt) {
  loadSpinnerPage();
  handle(Kind::kPromptShown);
  EXPECT_FALSE(timer.runs);
  handle(Kind::kPromptClosed);
  EXPECT_TRUE(timer.runs);
}

TEST_F(LoadTrackerTest, StopsTheTimerDuringAPrompt) {
  handle(Kind::kStarted, "http://site/page");
  handle(Kind::kPromptShown);
  EXPECT_FALSE(timer.runs);
  handle(Kind::kPromptClosed);
  EXPECT_TRUE(timer.runs);
}

TEST_F(LoadTrackerTest, DoesNotStartTheTimerDuringAPrompt) {
  handle(Kind::kStarted, "http://site/page");
  handle(Kind::kPromptShown);
  handle(Kind::kProgress);
  EXPECT_FALSE(timer.runs);
}

TEST_F(LoadTrackerTest, StartsTheTimerAfterTheLastPrompt) {
  handle(Kind::kStarted, "http://site/page");
  handle(Kind::kPromptShown);
  handle(Kind::kPromptShown);
  handle(Kind::kPromptClosed);
  EXPECT_FALSE(timer.runs);
  handle(Kind::kPromptClosed);
  EXPECT_TRUE(timer.runs);
}

TEST_F(LoadTrackerTest, ReportsAFrameTimeoutUnderItsRedirectedAddress) {
  loadPageWithFrame();
  handle(Kind::kResourceFinished, {}, 1);
  handle(Kind::kResourceRedirected, "http://site/moved", 2);
  tracker.timedOut();
  EXPECT_EQ(outcomes.all, (Outcomes{"failed-provisional http://site/moved -1001"}));
}

TEST_F(LoadTrackerTest, ReportsAPendingFinishBeforeTheNextLoad) {
  loadPageWithFrame();
  handle(Kind::kFinished, "http://site/page");
  EXPECT_EQ(outcomes.all, Outcomes{});
  handle(Kind::kStarted, "http://site/page");
  EXPECT_EQ(outcomes.all, (Outcomes{"finished http://site/page"}));
  handle(Kind::kResourceFinished, {}, 2);
  EXPECT_EQ(outcomes.all.size(), 1u);
}

TEST_F(LoadTrackerTest, DistinguishesFramesWithTheSameAddress) {
  loadPageWithFrame();
  handle(Kind::kNavigation, "http://site/frame");
  handle(Kind::kNavigation, "http://site/frame");
  handle(Kind::kResourceStarted, "http://site/frame", 3);
  handle(Kind::kResourceStarted, "http://site/frame", 4);
  handle(Kind::kResourceFailed, "http://site/frame", 4, {"soup-session-error-quark", 0});
  EXPECT_EQ(outcomes.all, (Outcomes{"failed-provisional http://site/frame -1017"}));
}

TEST_F(LoadTrackerTest, UsesANavigationForOneFrameOnly) {
  loadPageWithFrame();
  handle(Kind::kNavigation, "http://site/target");
  handle(Kind::kResourceRedirected, "http://site/target", 2);
  handle(Kind::kResourceFinished, {}, 2);
  handle(Kind::kResourceStarted, "http://site/target", 3);
  handle(Kind::kResourceFailed, "http://site/target", 3, {"g-io-error-quark", 39});
  EXPECT_EQ(outcomes.all, Outcomes{});
}

TEST_F(LoadTrackerTest, UsesNoNavigationOfADownload) {
  handle(Kind::kStarted, "http://site/page");
  handle(Kind::kCommitted, "http://site/page");
  handle(Kind::kNavigation, "http://site/file");
  handle(Kind::kDownloadStarted, "http://site/file");
  handle(Kind::kResourceStarted, "http://site/file", 3);
  handle(Kind::kResourceFailed, "http://site/file", 3, {"g-io-error-quark", 39});
  EXPECT_EQ(outcomes.all, Outcomes{});
}

TEST_F(LoadTrackerTest, ForgetsNavigationsThatLoadNothing) {
  handle(Kind::kStarted, "http://site/page");
  handle(Kind::kCommitted, "http://site/page");
  handle(Kind::kNavigation, "http://site/first");
  handle(Kind::kNavigation, "http://site/second");
  for (int i = 1; i < 1000; ++i)
    handle(Kind::kNavigation, "http://site/page#" + std::to_string(i));
  handle(Kind::kResourceStarted, "http://site/first", 2);
  handle(Kind::kResourceFailed, "http://site/first", 2, {"g-io-error-quark", 39});
  EXPECT_EQ(outcomes.all, Outcomes{});
  handle(Kind::kResourceStarted, "http://site/second", 3);
  handle(Kind::kResourceFailed, "http://site/second", 3, {"g-io-error-quark", 39});
  EXPECT_EQ(outcomes.all, (Outcomes{"failed-provisional http://site/second -1004"}));
}

TEST_F(LoadTrackerTest, ReportsARefusedFrameResponseAsProvisional) {
  loadPageWithFrame();
  handle(Kind::kResourceResponse, {}, 2);
  handle(Kind::kResourceFailed, "http://site/frame", 2, {"WebKitPolicyError", 102});
  EXPECT_EQ(outcomes.all, (Outcomes{"failed-provisional http://site/frame 102"}));
}

}  // namespace
