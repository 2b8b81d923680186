// Replays the events that real web views have reported: the files in traces/, recorded with record-trace.

#include "tests/app/gtk/Trace.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/app/gtk/LoadTrackerTest.h"

namespace {

const std::filesystem::path kFolder = TRACES;

std::vector<std::string> linesOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  return lines;
}

class TraceTest : public LoadTrackerTest {
 protected:
  const Outcomes& replay(const std::string& name) {
    for (const std::string& line : linesOf(kFolder / (name + ".trace")))
      tracker.handle(eventOf(line));
    return outcomes.all;
  }

  const Outcomes& replayUntilTimeout(const std::string& name) {
    EXPECT_EQ(replay(name), Outcomes{});
    EXPECT_TRUE(timer.runs);
    tracker.timedOut();
    return outcomes.all;
  }
};

TEST(TraceFormatTest, EveryRecordedLineRoundTrips) {
  int lines = 0;
  for (const auto& file : std::filesystem::directory_iterator(kFolder)) {
    for (const std::string& line : linesOf(file.path())) {
      EXPECT_EQ(lineOf(eventOf(line)), line) << file.path();
      ++lines;
    }
  }
  EXPECT_GT(lines, 0);
}

TEST(TraceFormatTest, EveryEventRoundTrips) {
  for (const char* line :
       {"requested ", "failed cb:/done - 0", "failed-provisional not an address WebKitPolicyError 101",
        "resource-failed 2 http://site/ g-io-error-quark 39", "download http://site/file", "prompt-shown",
        "prompt-closed", "process-ended"})
    EXPECT_EQ(lineOf(eventOf(line)), line);
}

TEST(TraceFormatTest, RejectsOtherLines) {
  for (const char* line : {"", "unknown http://site/", "resource http://site/", "failed http://site/"})
    EXPECT_THROW(eventOf(line), std::invalid_argument) << line;
}

TEST_F(TraceTest, APageFinishesUnderItsAddress) {
  EXPECT_EQ(replay("ordinary"), (Outcomes{"finished http://site/plain"}));
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, ARedirectedPageFinishesUnderItsLastAddress) {
  EXPECT_EQ(replay("redirected"), (Outcomes{"finished http://site/plain?x=1#frag"}));
}

TEST_F(TraceTest, ASubmittedFormFinishesTwoPages) {
  EXPECT_EQ(replay("form"), (Outcomes{"finished http://site/form", "finished http://site/plain?x=1#frag"}));
}

TEST_F(TraceTest, ASelfNavigatingPageFinishesFirst) {
  EXPECT_EQ(replay("self-navigation"), (Outcomes{"finished http://site/onload", "finished http://site/plain"}));
}

TEST_F(TraceTest, APageReplacedWhileLoadingIsCancelled) {
  EXPECT_EQ(replay("replaced-while-loading"),
            (Outcomes{"failed http://site/timeout0 -999", "finished http://site/plain"}));
}

TEST_F(TraceTest, APageReplacedBeforeItsCommitIsCancelled) {
  EXPECT_EQ(replay("replaced-before-commit"),
            (Outcomes{"finished http://site/replace", "failed-provisional http://site/slow -999",
                      "finished http://site/plain"}));
}

TEST_F(TraceTest, TooManyRedirectsFail) {
  EXPECT_EQ(replay("redirect-loop"), (Outcomes{"failed-provisional http://site/loop -1007"}));
}

TEST_F(TraceTest, ARedirectToAnUnsupportedSchemeFails) {
  EXPECT_EQ(replay("redirect-to-scheme"), (Outcomes{"failed-provisional cb:/done?code=1 -1002"}));
}

TEST_F(TraceTest, AScriptThatOpensAnUnsupportedSchemeFails) {
  EXPECT_EQ(replay("script-to-scheme"),
            (Outcomes{"finished http://site/js-scheme", "failed-provisional cb:/done?code=1 101"}));
}

TEST_F(TraceTest, ARefusedConnectionFailsWithoutAFinish) {
  EXPECT_EQ(replay("refused"), (Outcomes{"failed-provisional http://refused/ -1004"}));
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, AnUnknownHostFails) {
  EXPECT_EQ(replay("unknown-host"), (Outcomes{"failed-provisional http://no.such.host.invalid/ -1003"}));
}

TEST_F(TraceTest, AnUntrustedCertificateFails) {
  EXPECT_EQ(replay("untrusted"), (Outcomes{"failed-provisional https://untrusted/ -1203"}));
}

TEST_F(TraceTest, AMalformedResponseFails) {
  EXPECT_EQ(replay("garbled"), (Outcomes{"failed-provisional http://garbled/ -1017"}));
}

TEST_F(TraceTest, ADroppedConnectionIsLost) {
  EXPECT_EQ(replay("dropped"), (Outcomes{"failed-provisional http://site/drop -1005"}));
}

TEST_F(TraceTest, ATruncatedResponseIsALostConnection) {
  EXPECT_EQ(replay("truncated"), (Outcomes{"failed-provisional http://site/trunc -1005"}));
}

TEST_F(TraceTest, AResponseWithoutContentFails) {
  EXPECT_EQ(replay("no-content"), (Outcomes{"failed-provisional http://site/204 102"}));
}

TEST_F(TraceTest, ADownloadFails) {
  EXPECT_EQ(replay("download"), (Outcomes{"failed-provisional http://site/download 102"}));
}

TEST_F(TraceTest, ARestrictedPortFails) {
  EXPECT_EQ(replay("restricted-port"), (Outcomes{"failed-provisional http://restricted:1/ 103"}));
}

TEST_F(TraceTest, ARedirectToARestrictedPortFails) {
  EXPECT_EQ(replay("redirect-to-restricted-port"), (Outcomes{"failed-provisional http://restricted:1/ 103"}));
}

TEST_F(TraceTest, ARequestedBlankPageFinishes) {
  EXPECT_EQ(replay("blank-page"), (Outcomes{"finished http://site/about", "finished about:blank"}));
}

TEST_F(TraceTest, AnInvalidAddressFails) {
  EXPECT_EQ(replay("no-address"), (Outcomes{"failed-provisional not an address 101"}));
}

TEST_F(TraceTest, AnAddressWithoutARequestTimesOut) {
  replay("ordinary");
  outcomes.all.clear();
  EXPECT_EQ(replayUntilTimeout("script-address"), (Outcomes{"failed-provisional javascript:1 -1001"}));
}

TEST_F(TraceTest, AnAwaitedPagesEmptyRedirectTimesOut) {
  loadSpinnerPage();
  EXPECT_EQ(replay("empty-redirect"), (Outcomes{"failed-provisional http://site/empty -999"}));
  ASSERT_TRUE(timer.runs);
  tracker.timedOut();
  EXPECT_EQ(outcomes.all.back(), "failed-provisional http://site/signin -1001");
}

TEST_F(TraceTest, ALoadedPageIsNoLongerAwaited) {
  loadSpinnerPage();
  EXPECT_EQ(replay("ordinary"), (Outcomes{"finished http://site/plain"}));
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, AFailureAfterAnAwaitedPageCancelsTimer) {
  loadSpinnerPage();
  replay("ordinary");
  replay("empty-redirect");
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, AFailedImageIsIgnored) {
  EXPECT_EQ(replay("failed-image"), (Outcomes{"finished http://site/image-fail"}));
}

TEST_F(TraceTest, AFailedFetchIsIgnored) {
  EXPECT_EQ(replay("failed-fetch"), (Outcomes{"finished http://site/fetch-fail"}));
}

TEST_F(TraceTest, AnHttpErrorPageFinishes) {
  EXPECT_EQ(replay("not-found"), (Outcomes{"finished http://site/nope"}));
}

TEST_F(TraceTest, SubFramesDoNotFinishTheMainFrame) {
  EXPECT_EQ(replay("frame"), (Outcomes{"finished http://site/frame"}));
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, AFailedSubFrameIsAFailure) {
  EXPECT_EQ(replay("failed-frame"),
            (Outcomes{"failed-provisional http://no.such.host.invalid/ -1003", "finished http://site/frame-unknown"}));
}

TEST_F(TraceTest, ARedirectedFrameFailsUnderItsLastAddress) {
  EXPECT_EQ(replay("redirected-frame"), (Outcomes{"failed-provisional http://no.such.host.invalid/ -1003",
                                                  "finished http://site/frame-redirected"}));
}

TEST_F(TraceTest, ATruncatedSubFrameFailsAfterItsCommit) {
  EXPECT_EQ(replay("truncated-frame"),
            (Outcomes{"failed http://site/trunc -1005", "finished http://site/frame-trunc"}));
}

TEST_F(TraceTest, ARemovedSubFrameIsCancelled) {
  EXPECT_EQ(replay("removed-frame"),
            (Outcomes{"failed-provisional http://site/slow -999", "finished http://site/frame-removed"}));
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, ANavigatingSubFrameIsTrackedAgain) {
  EXPECT_EQ(replay("navigated-frame"),
            (Outcomes{"failed-provisional http://site/slow -999", "finished http://site/frame-nav"}));
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, AFrameRedirectedToARestrictedPortFails) {
  EXPECT_EQ(replay("frame-redirected-to-restricted-port").front(), "failed-provisional http://site/go-refused 103");
}

TEST_F(TraceTest, BlankSubFramesAreIgnored) {
  EXPECT_EQ(replay("blank-frames"), (Outcomes{"finished http://site/frame-blank"}));
  EXPECT_FALSE(timer.runs);
}

TEST_F(TraceTest, APageFinishesUnderThePushedAddress) {
  EXPECT_EQ(replay("pushed-state"), (Outcomes{"finished http://site/pushed?a=1"}));
}

TEST_F(TraceTest, AFragmentIsNoSeparateLoad) {
  EXPECT_EQ(replay("fragment"), (Outcomes{"finished http://site/hash#x"}));
}

TEST_F(TraceTest, AStoppedPageIsCancelled) {
  EXPECT_EQ(replay("stopped"), (Outcomes{"failed http://site/stop -999"}));
}

TEST_F(TraceTest, AReloadedPageFinishesTwice) {
  EXPECT_EQ(replay("reloaded"), (Outcomes{"finished http://site/reload", "finished http://site/reload"}));
}

TEST_F(TraceTest, GoingBackFinishesThePreviousPage) {
  EXPECT_EQ(replay("history"),
            (Outcomes{"finished http://site/history", "finished http://site/back", "finished http://site/history"}));
}

TEST_F(TraceTest, AServerWithoutAResponseTimesOut) {
  EXPECT_EQ(replayUntilTimeout("stalled"), (Outcomes{"failed-provisional http://site/stall -1001"}));
}

TEST_F(TraceTest, AStalledDocumentTimesOut) {
  EXPECT_EQ(replayUntilTimeout("stalled-after-commit"), (Outcomes{"failed http://site/stall-body -1001"}));
}

TEST_F(TraceTest, AStalledSubFrameTimesOut) {
  EXPECT_EQ(replayUntilTimeout("stalled-frame"), (Outcomes{"failed-provisional http://site/stall -1001"}));
}

TEST_F(TraceTest, APageFinishesWithoutAStalledImage) {
  EXPECT_EQ(replayUntilTimeout("stalled-image"), (Outcomes{"finished http://site/image-stall"}));
  handle(Kind::kFinished, "http://site/image-stall");
  EXPECT_EQ(outcomes.all.size(), 1u);
}

}  // namespace
