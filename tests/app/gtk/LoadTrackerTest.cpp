// Replays what real web views said (the files in traces/, made by record-trace) and looks at what the tracker made of
// it.

#include "app/gtk/LoadTracker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <sstream>
#include <vector>

namespace {

class NotedOutcomes : public LoadOutcomes {
 public:
  void mainFrameFinished(const std::optional<std::string>& address) override {
    noted.push_back("finished " + address.value_or("-"));
  }
  void loadFailed(const LoadFailure& failure) override {
    noted.push_back((failure.provisional ? "failed-provisional " : "failed ") + failure.address.value_or("-") + " " +
                    std::to_string(failure.code));
  }

  std::vector<std::string> noted;
};

class FakeClock : public DataClock {
 public:
  void wind() override { runs = true; }
  void stop() override { runs = false; }

  bool runs = false;
};

// A trace line is the event's name and its parts, the address before the error's domain and code.
void replayLine(const std::string& line, LoadTracker& tracker) {
  std::istringstream words(line);
  std::string event;
  words >> event;
  std::string rest = line.substr(std::min(line.size(), event.size() + 1));

  if (event == "requested") return tracker.loadRequested(rest);
  if (event == "asked") return tracker.navigationAsked(rest);
  if (event == "started") return tracker.loadStarted(rest);
  if (event == "redirected") return tracker.loadRedirected(rest);
  if (event == "committed") return tracker.loadCommitted(rest);
  if (event == "finished") return tracker.loadFinished(rest);
  if (event == "progressed") return tracker.progressed();
  if (event == "download") return tracker.downloadStarted(rest);
  if (event == "person-asked") return tracker.personAsked();
  if (event == "person-answered") return tracker.personAnswered();
  if (event == "page-process-ended") return tracker.pageProcessEnded();

  const bool failed = event.rfind("failed", 0) == 0;
  LoadError error;
  if (failed || event == "resource-failed") {
    const std::size_t code = rest.rfind(' ');
    const std::size_t domain = rest.rfind(' ', code - 1);
    error.code = std::stoi(rest.substr(code + 1));
    error.domain = rest.substr(domain + 1, code - domain - 1);
    if (error.domain == "-") error.domain.clear();
    rest.resize(domain);
  }
  if (failed) return tracker.loadFailed(event == "failed-provisional", rest, error);

  const std::size_t blank = rest.find(' ');
  const auto id = static_cast<unsigned>(std::stoul(rest));
  const std::string address = blank == std::string::npos ? "" : rest.substr(blank + 1);
  if (event == "main-resource") return tracker.resourceStarted(id, address, true);
  if (event == "resource") return tracker.resourceStarted(id, address, false);
  if (event == "resource-redirected") return tracker.resourceRedirected(id, address);
  if (event == "resource-answered") return tracker.resourceAnswered(id);
  if (event == "resource-finished") return tracker.resourceFinished(id);
  if (event == "resource-failed") return tracker.resourceFailed(id, address, error);
  FAIL() << "no such event: " << line;
}

using Outcomes = std::vector<std::string>;

class LoadTrackerTest : public testing::Test {
 protected:
  Outcomes replayed(const std::string& name) {
    std::ifstream trace(std::string(TRACES) + "/" + name + ".trace");
    EXPECT_TRUE(trace) << name;
    for (std::string line; std::getline(trace, line);)
      replayLine(line, tracker);
    return outcomes.noted;
  }

  Outcomes replayedUntilTheClockRings(const std::string& name) {
    EXPECT_EQ(replayed(name), Outcomes{});
    EXPECT_TRUE(clock.runs);
    tracker.dataTimedOut();
    return outcomes.noted;
  }

  // A committed page with a frame, whose document is resource 2.
  void replayPageWithFrame() {
    tracker.loadStarted("http://site/page");
    tracker.resourceStarted(1, "http://site/page", true);
    tracker.loadCommitted("http://site/page");
    tracker.navigationAsked("http://site/frame");
    tracker.resourceStarted(2, "http://site/frame", false);
  }

  // As the application does when its spinner page has finished.
  void replaySpinnerPage() {
    const std::string spinner = "file:///spinner_html.html";
    tracker.loadStarted(spinner);
    tracker.loadCommitted(spinner);
    tracker.loadFinished(spinner);
    tracker.awaitPage("http://site/signin");
    outcomes.noted.clear();
  }

  NotedOutcomes outcomes;
  FakeClock clock;
  LoadTracker tracker{outcomes, clock};
};

TEST_F(LoadTrackerTest, APageFinishesOnceUnderItsAddress) {
  EXPECT_EQ(replayed("ordinary"), (Outcomes{"finished http://site/plain"}));
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, ARedirectedPageFinishesUnderTheLastAddressWithItsFragment) {
  EXPECT_EQ(replayed("redirected"), (Outcomes{"finished http://site/plain?x=1#frag"}));
}

TEST_F(LoadTrackerTest, ASentFormFinishesTwoPages) {
  EXPECT_EQ(replayed("form"), (Outcomes{"finished http://site/form", "finished http://site/plain?x=1#frag"}));
}

TEST_F(LoadTrackerTest, APageThatNavigatesItselfFinishesUnderItsOwnAddressFirst) {
  EXPECT_EQ(replayed("self-navigation"), (Outcomes{"finished http://site/onload", "finished http://site/plain"}));
}

TEST_F(LoadTrackerTest, APageThatGoesOnWhileLoadingIsCancelledAndNeverFinishes) {
  EXPECT_EQ(replayed("replaced-while-loading"),
            (Outcomes{"failed http://site/timeout0 -999", "finished http://site/plain"}));
}

TEST_F(LoadTrackerTest, ALoadReplacedBeforeItCommitsIsCancelled) {
  EXPECT_EQ(replayed("replaced-before-commit"),
            (Outcomes{"finished http://site/replace", "failed-provisional http://site/slow -999",
                      "finished http://site/plain"}));
}

TEST_F(LoadTrackerTest, AReplacingLoadDoesNotFinishBeforeItHasStarted) {
  tracker.loadStarted("http://site/first");
  tracker.loadFailed(true, "http://site/first", {"WebKitNetworkError", 302});
  tracker.loadFinished("http://site/second");
  EXPECT_EQ(outcomes.noted, (Outcomes{"failed-provisional http://site/first -999"}));
}

TEST_F(LoadTrackerTest, TooManyRedirectsFail) {
  EXPECT_EQ(replayed("redirect-loop"), (Outcomes{"failed-provisional http://site/loop -1007"}));
}

TEST_F(LoadTrackerTest, ARedirectToADeadSchemeFailsAndDoesNotFinish) {
  EXPECT_EQ(replayed("redirect-to-scheme"), (Outcomes{"failed-provisional cb:/done?code=1 -1002"}));
}

TEST_F(LoadTrackerTest, AScriptThatGoesToADeadSchemeFails) {
  EXPECT_EQ(replayed("script-to-scheme"),
            (Outcomes{"finished http://site/js-scheme", "failed-provisional cb:/done?code=1 101"}));
}

TEST_F(LoadTrackerTest, TheFinishBehindAFailureReachesNobody) {
  EXPECT_EQ(replayed("refused"), (Outcomes{"failed-provisional http://refused/ -1004"}));
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, AnUnknownHostFails) {
  EXPECT_EQ(replayed("unknown-host"), (Outcomes{"failed-provisional http://no.such.host.invalid/ -1003"}));
}

TEST_F(LoadTrackerTest, AnUntrustedCertificateFails) {
  EXPECT_EQ(replayed("untrusted"), (Outcomes{"failed-provisional https://untrusted/ -1203"}));
}

TEST_F(LoadTrackerTest, AGarbledAnswerFails) {
  EXPECT_EQ(replayed("garbled"), (Outcomes{"failed-provisional http://garbled/ -1017"}));
}

TEST_F(LoadTrackerTest, ADroppedConnectionIsALostOne) {
  EXPECT_EQ(replayed("dropped"), (Outcomes{"failed-provisional http://site/drop -1005"}));
}

TEST_F(LoadTrackerTest, ATruncatedAnswerIsALostConnection) {
  EXPECT_EQ(replayed("truncated").back(), "failed-provisional http://site/trunc -1005");
}

TEST_F(LoadTrackerTest, AnAnswerWithoutContentFails) {
  EXPECT_EQ(replayed("no-content"), (Outcomes{"failed-provisional http://site/204 102"}));
}

TEST_F(LoadTrackerTest, ADownloadFails) {
  EXPECT_EQ(replayed("download"), (Outcomes{"failed-provisional http://site/download 102"}));
}

TEST_F(LoadTrackerTest, ARestrictedPortFailsAlthoughABlankPageIsCommitted) {
  EXPECT_EQ(replayed("restricted-port"), (Outcomes{"failed-provisional http://restricted:1/ 103"}));
}

TEST_F(LoadTrackerTest, ARedirectToARestrictedPortFails) {
  EXPECT_EQ(replayed("redirect-to-restricted-port"), (Outcomes{"failed-provisional http://restricted:1/ 103"}));
}

TEST_F(LoadTrackerTest, ABlankPageThatWasAskedForFinishes) {
  EXPECT_EQ(replayed("blank-page"), (Outcomes{"finished http://site/about", "finished about:blank"}));
}

TEST_F(LoadTrackerTest, ATextThatIsNoAddressFails) {
  EXPECT_EQ(replayed("no-address"), (Outcomes{"failed-provisional not an address 101"}));
}

TEST_F(LoadTrackerTest, AnAddressThatNothingIsHeardOfTimesOut) {
  replayed("ordinary");
  outcomes.noted.clear();
  EXPECT_EQ(replayedUntilTheClockRings("script-address"), (Outcomes{"failed-provisional javascript:1 -1001"}));
}

TEST_F(LoadTrackerTest, AnAwaitedPageNeverRequestedTimesOut) {
  replaySpinnerPage();
  ASSERT_TRUE(clock.runs);
  tracker.dataTimedOut();
  EXPECT_EQ(outcomes.noted, (Outcomes{"failed-provisional http://site/signin -1001"}));
}

TEST_F(LoadTrackerTest, AnAwaitedPageWithoutAnAddressTimesOut) {
  tracker.awaitPage("");
  tracker.dataTimedOut();
  EXPECT_EQ(outcomes.noted, (Outcomes{"failed-provisional - -1001"}));
}

TEST_F(LoadTrackerTest, AnAwaitedPagesEmptyRedirectTimesOut) {
  replaySpinnerPage();
  EXPECT_EQ(replayed("empty-redirect"), (Outcomes{"failed-provisional http://site/empty -999"}));
  ASSERT_TRUE(clock.runs);
  tracker.dataTimedOut();
  EXPECT_EQ(outcomes.noted.back(), "failed-provisional http://site/signin -1001");
}

TEST_F(LoadTrackerTest, AnAwaitedPageThatCameNeverTimesOut) {
  replaySpinnerPage();
  EXPECT_EQ(replayed("ordinary"), (Outcomes{"finished http://site/plain"}));
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, AFailureBehindTheAwaitedPageStopsTheClock) {
  replaySpinnerPage();
  replayed("ordinary");
  replayed("empty-redirect");
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, AQuestionStopsTheClockOfAnAwaitedPage) {
  replaySpinnerPage();
  tracker.personAsked();
  EXPECT_FALSE(clock.runs);
  tracker.personAnswered();
  EXPECT_TRUE(clock.runs);
}

TEST_F(LoadTrackerTest, AFailedImageIsNoFailure) {
  EXPECT_EQ(replayed("failed-image"), (Outcomes{"finished http://site/image-fail"}));
}

TEST_F(LoadTrackerTest, AFailedFetchIsNoFailure) {
  EXPECT_EQ(replayed("failed-fetch"), (Outcomes{"finished http://site/fetch-fail"}));
}

TEST_F(LoadTrackerTest, AnHttpErrorPageFinishes) {
  EXPECT_EQ(replayed("not-found"), (Outcomes{"finished http://site/nope"}));
}

TEST_F(LoadTrackerTest, ASubFrameNeverFinishesForTheMainFrame) {
  EXPECT_EQ(replayed("frame"), (Outcomes{"finished http://site/frame"}));
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, AFailedSubFrameIsAFailure) {
  EXPECT_EQ(replayed("failed-frame"),
            (Outcomes{"failed-provisional http://no.such.host.invalid/ -1003", "finished http://site/frame-unknown"}));
}

TEST_F(LoadTrackerTest, ARedirectedFrameFailsUnderItsLastAddress) {
  EXPECT_EQ(replayed("redirected-frame"), (Outcomes{"failed-provisional http://no.such.host.invalid/ -1003",
                                                    "finished http://site/frame-redirected"}));
}

TEST_F(LoadTrackerTest, ARedirectedFrameTimesOutUnderItsLastAddress) {
  replayPageWithFrame();
  tracker.resourceFinished(1);
  tracker.resourceRedirected(2, "http://site/moved");
  tracker.dataTimedOut();
  EXPECT_EQ(outcomes.noted, (Outcomes{"failed-provisional http://site/moved -1001"}));
}

TEST_F(LoadTrackerTest, ATruncatedSubFrameFailsAfterItsCommit) {
  EXPECT_EQ(replayed("truncated-frame"),
            (Outcomes{"failed http://site/trunc -1005", "finished http://site/frame-trunc"}));
}

TEST_F(LoadTrackerTest, AHeldFinishIsToldBeforeTheNextLoad) {
  replayPageWithFrame();
  tracker.loadFinished("http://site/page");
  EXPECT_EQ(outcomes.noted, Outcomes{});
  tracker.loadStarted("http://site/page");
  EXPECT_EQ(outcomes.noted, (Outcomes{"finished http://site/page"}));
  tracker.resourceFinished(2);
  EXPECT_EQ(outcomes.noted.size(), 1u);
}

TEST_F(LoadTrackerTest, OneOfTwoFramesWithTheSameAddressMayFail) {
  replayPageWithFrame();
  tracker.navigationAsked("http://site/frame");
  tracker.navigationAsked("http://site/frame");
  tracker.resourceStarted(3, "http://site/frame", false);
  tracker.resourceStarted(4, "http://site/frame", false);
  tracker.resourceFailed(4, "http://site/frame", {"soup-session-error-quark", 0});
  EXPECT_EQ(outcomes.noted, (Outcomes{"failed-provisional http://site/frame -1017"}));
}

TEST_F(LoadTrackerTest, WhereAFrameWasRedirectedIsNoNavigationOfAnother) {
  replayPageWithFrame();
  tracker.navigationAsked("http://site/target");
  tracker.resourceRedirected(2, "http://site/target");
  tracker.resourceFinished(2);
  tracker.resourceStarted(3, "http://site/target", false);
  tracker.resourceFailed(3, "http://site/target", {"g-io-error-quark", 39});
  EXPECT_EQ(outcomes.noted, Outcomes{});
}

TEST_F(LoadTrackerTest, ADownloadedAddressIsNoNavigation) {
  replayed("ordinary");
  outcomes.noted.clear();
  tracker.navigationAsked("http://site/file");
  tracker.downloadStarted("http://site/file");
  tracker.resourceStarted(3, "http://site/file", false);
  tracker.resourceFailed(3, "http://site/file", {"g-io-error-quark", 39});
  EXPECT_EQ(outcomes.noted, Outcomes{});
}

TEST_F(LoadTrackerTest, ARefusedAnswerOfASubFrameIsProvisional) {
  replayPageWithFrame();
  tracker.resourceAnswered(2);
  tracker.resourceFailed(2, "http://site/frame", {"WebKitPolicyError", 102});
  EXPECT_EQ(outcomes.noted, (Outcomes{"failed-provisional http://site/frame 102"}));
}

TEST_F(LoadTrackerTest, TheClockStandsStillWhileAPersonIsAsked) {
  tracker.loadStarted("http://site/page");
  tracker.personAsked();
  EXPECT_FALSE(clock.runs);
  tracker.personAnswered();
  EXPECT_TRUE(clock.runs);
}

TEST_F(LoadTrackerTest, WhatElseArrivesDoesNotWindTheClockWhileAPersonIsAsked) {
  tracker.loadStarted("http://site/page");
  tracker.personAsked();
  tracker.progressed();
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, TheClockRunsOnWhenTheLastQuestionIsAnswered) {
  tracker.loadStarted("http://site/page");
  tracker.personAsked();
  tracker.personAsked();
  tracker.personAnswered();
  EXPECT_FALSE(clock.runs);
  tracker.personAnswered();
  EXPECT_TRUE(clock.runs);
}

TEST_F(LoadTrackerTest, ARemovedSubFrameIsCancelled) {
  EXPECT_EQ(replayed("removed-frame"),
            (Outcomes{"failed-provisional http://site/slow -999", "finished http://site/frame-removed"}));
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, ASubFrameThatNavigatesIsTrackedAgain) {
  EXPECT_EQ(replayed("navigated-frame"),
            (Outcomes{"failed-provisional http://site/slow -999", "finished http://site/frame-nav"}));
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, ASubFrameRedirectedToARestrictedPortFails) {
  EXPECT_EQ(replayed("frame-redirected-to-restricted-port").front(), "failed-provisional http://site/go-refused 103");
}

TEST_F(LoadTrackerTest, BlankSubFramesAreNoLoads) {
  EXPECT_EQ(replayed("blank-frames"), (Outcomes{"finished http://site/frame-blank"}));
  EXPECT_FALSE(clock.runs);
}

TEST_F(LoadTrackerTest, AnAddressPushedWhileLoadingIsThePagesOwn) {
  EXPECT_EQ(replayed("pushed-state"), (Outcomes{"finished http://site/pushed?a=1"}));
}

TEST_F(LoadTrackerTest, AFragmentIsNoLoadOfItsOwn) {
  EXPECT_EQ(replayed("fragment"), (Outcomes{"finished http://site/hash#x"}));
}

TEST_F(LoadTrackerTest, AStoppedPageIsCancelled) {
  EXPECT_EQ(replayed("stopped"), (Outcomes{"failed http://site/stop -999"}));
}

TEST_F(LoadTrackerTest, AReloadedPageFinishesAgain) {
  EXPECT_EQ(replayed("reloaded"), (Outcomes{"finished http://site/reload", "finished http://site/reload"}));
}

TEST_F(LoadTrackerTest, GoingBackFinishesTheFormerPageAgain) {
  EXPECT_EQ(replayed("history"),
            (Outcomes{"finished http://site/history", "finished http://site/back", "finished http://site/history"}));
}

TEST_F(LoadTrackerTest, ASilentServerTimesOut) {
  EXPECT_EQ(replayedUntilTheClockRings("stalled"), (Outcomes{"failed-provisional http://site/stall -1001"}));
}

TEST_F(LoadTrackerTest, AServerThatFallsSilentInMidPageTimesOut) {
  EXPECT_EQ(replayedUntilTheClockRings("stalled-after-commit"), (Outcomes{"failed http://site/stall-body -1001"}));
}

TEST_F(LoadTrackerTest, ASilentSubFrameTimesOut) {
  EXPECT_EQ(replayedUntilTheClockRings("stalled-frame"), (Outcomes{"failed-provisional http://site/stall -1001"}));
}

TEST_F(LoadTrackerTest, APageThatOnlyWaitsForAnImageFinishesWithoutIt) {
  EXPECT_EQ(replayedUntilTheClockRings("stalled-image"), (Outcomes{"finished http://site/image-stall"}));
  tracker.loadFinished("http://site/image-stall");
  EXPECT_EQ(outcomes.noted.size(), 1u);
}

TEST_F(LoadTrackerTest, APageProcessThatEndsIsAFailure) {
  replayed("ordinary");
  tracker.pageProcessEnded();
  EXPECT_EQ(outcomes.noted.back(), "failed http://site/plain -1");
}

TEST_F(LoadTrackerTest, AnEmptyAddressIsNone) {
  tracker.loadStarted("");
  tracker.loadCommitted("");
  tracker.loadFinished("");
  EXPECT_EQ(outcomes.noted, (Outcomes{"finished -"}));
}

}  // namespace
