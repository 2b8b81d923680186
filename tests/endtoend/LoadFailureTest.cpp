// Failed loads, and which of them end the run.

#include <signal.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Processes.h"
#include "tests/endtoend/RawServer.h"
#include "tests/tools/support/ClosedPort.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using tools::ClosedPort;

class LoadFailureTest : public EndToEndTest {
 protected:
  // The three log lines of a provisional failure.
  void expectFailureInTheLog(const std::string& address, int code) {
    const std::vector<std::string> messages = logMessages();
    EXPECT_THAT(messages, Contains("didFailProvisionalLoadWithError for URL " + address));
    EXPECT_THAT(messages, Contains("didFailProvisionalLoadWithError Error code " + std::to_string(code)));
    EXPECT_THAT(messages, Contains(StartsWith("didFailProvisionalLoadWithError Error domain ")));
  }

  const ClosedPort closedPort;
};

TEST_F(LoadFailureTest, ARefusedConnectionEndsTheRun) {
  options.signIn = closedPort.address("/signin");
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(closedPort.address("/signin"), -1004);
}

TEST_F(LoadFailureTest, ARefusedRedirectAddressIsNoResult) {
  options.redirect = closedPort.address("/done");
  site.serve("/signin", redirectTo(closedPort.address("/done?code=1")));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(closedPort.address("/done?…"), -1004);
}

TEST_F(LoadFailureTest, AnUnknownHostEndsTheRun) {
  options.signIn = "http://nowhere.invalid/signin";
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog("http://nowhere.invalid/signin", -1003);
}

TEST_F(LoadFailureTest, ADroppedConnectionDoesNotEndTheRun) {
  const RawServer server("");
  options.signIn = server.address("/signin");
  start();
  untilLogSays("didFailProvisionalLoadWithError Error code -1005");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  expectFailureInTheLog(server.address("/signin"), -1005);
}

TEST_F(LoadFailureTest, APageTruncatedBeforeItsCommitIsLogged) {
  const RawServer server("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 9999\r\n\r\n<p>half a page");
  options.signIn = server.address("/signin");
  start();
  untilLogSays("didFailProvisionalLoadWithError Error code -1005");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(LoadFailureTest, APageTruncatedAfterItsCommitIsLogged) {
  const RawServer server("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 99999\r\n\r\n<p>half a page" +
                         std::string(20'000, '.'));
  options.signIn = server.address("/signin");
  start();
  untilLogSays("didFailLoadWithError Error code -1005");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(logMessages(), Contains("didFailLoadWithError for URL " + server.address("/signin")));
}

TEST_F(LoadFailureTest, AMalformedResponseEndsTheRun) {
  const RawServer server("good morning\r\n\r\n");
  options.signIn = server.address("/signin");
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(server.address("/signin"), -1017);
}

TEST_F(LoadFailureTest, AReplacedLoadIsLoggedOnly) {
  site.serve("/signin", page("<script>onload = () => setTimeout(() => { location.href = '/slow' });"
                             "onclick = () => { location.href = '/done?code=1' }</script>"));
  site.hold("/slow");
  start();
  untilRequested("/slow");
  click();
  EXPECT_EQ(message(), result(site.address("/done?code=1")));
  expectFailureInTheLog(site.address("/slow"), -999);
}

TEST_F(LoadFailureTest, ARedirectLoopEndsTheRun) {
  site.serve("/signin", redirectTo(site.address("/signin")));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(site.address("/signin"), -1007);
}

TEST_F(LoadFailureTest, AnUnsupportedRedirectAddressIsNoResult) {
  options.redirect = "cb:/done";
  site.serve("/signin", redirectTo("cb:/done?code=1"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog("cb:/done?…", -1002);
}

TEST_F(LoadFailureTest, UnsupportedSchemesInScriptsEndTheRun) {
  options.redirect = "cb:/done";
  site.serve("/signin", pageThatGoesTo("cb:/done?code=1"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog("cb:/done?…", 101);
}

TEST_F(LoadFailureTest, ARestrictedPortEndsTheRun) {
  options.signIn = "http://127.0.0.1:1/signin";
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog("http://127.0.0.1:1/signin", 103);
}

TEST_F(LoadFailureTest, AResponseWithoutContentEndsTheRun) {
  site.serve("/signin", {204, "", {}});
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(site.address("/signin"), 102);
}

TEST_F(LoadFailureTest, ADownloadEndsTheRunAndSavesNothing) {
  site.serve("/signin", {200, "secret", {{"Content-Disposition", "attachment; filename=secret.txt"}}});
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(site.address("/signin"), 102);
  EXPECT_THAT(filesInHome(), Not(Contains(HasSubstr("secret"))));
}

TEST_F(LoadFailureTest, AFailedSubFrameEndsTheRun) {
  site.serve("/signin", page("<iframe src='" + closedPort.address("/advert") + "'></iframe>"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(closedPort.address("/advert"), -1004);
}

// HTML that embeds a document: the text before and after its address.
struct FrameMarkup {
  const char* name;
  const char* before;
  const char* after;
};

void PrintTo(const FrameMarkup& markup, std::ostream* out) {
  *out << markup.name;
}

class FrameTest : public LoadFailureTest, public testing::WithParamInterface<FrameMarkup> {};

TEST_P(FrameTest, ThatFailsEndsTheRun) {
  const std::string address = closedPort.address("/advert?a=1#part");
  site.serve("/inner", page("<iframe src='" + address + "'></iframe>"));
  site.serve("/signin", page(GetParam().before + address + GetParam().after));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(address, -1004);
}

INSTANTIATE_TEST_SUITE_P(
    Of, FrameTest,
    testing::Values(FrameMarkup{"Object", "<object data='", "'></object>"}, FrameMarkup{"Embed", "<embed src='", "'>"},
                    FrameMarkup{"Frameset", "<frameset cols='*'><frame src='", "'></frameset>"},
                    FrameMarkup{"FrameInAFrame", "<iframe src='/inner'></iframe><!-- ", " -->"},
                    FrameMarkup{"PostedForm",
                                "<iframe name='target'></iframe><form method='post' target='target' action='",
                                "'><input name='a'></form><script>document.forms[0].submit()</script>"}),
    [](const auto& each) { return each.param.name; });

TEST_F(LoadFailureTest, RedirectedFramesAreLoggedUnderTheirLastAddress) {
  site.serve("/moved", redirectTo(closedPort.address("/advert")));
  site.serve("/signin", page("<iframe src='/moved'></iframe>"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog(closedPort.address("/advert"), -1004);
}

TEST_F(LoadFailureTest, AFrameWithUnknownHostEndsTheRun) {
  site.serve("/signin", page("<iframe src='http://nowhere.invalid/advert'></iframe>"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectFailureInTheLog("http://nowhere.invalid/advert", -1003);
}

TEST_F(LoadFailureTest, AFrameWithStatus404IsNoFailure) {
  site.serve("/signin", page("<iframe src='/nowhere' onload=\"location.href = '/done'\"></iframe>"));
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
}

TEST_F(LoadFailureTest, FailedImagesAndFetchesAreIgnored) {
  const std::string away = closedPort.address("/image.png");
  site.serve("/signin", page("<img src='" + away + "'><script>onload = () => fetch('" + away +
                             "').catch(() => { location.href = '/done' })</script>"));
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
  EXPECT_THAT(logMessages(), Not(Contains(HasSubstr("didFail"))));
}

class KilledProcessTest : public LoadFailureTest, public testing::WithParamInterface<const char*> {};

TEST_P(KilledProcessTest, EndsTheRun) {
  site.serve("/signin", pageThatReportsItsLoad());
  start();
  untilRequested("/loaded");
  const auto process = descendantNamed(run->pid(), GetParam());
  ASSERT_TRUE(process);
  kill(*process, SIGKILL);
  EXPECT_EQ(message(), kLoadFailed);
  EXPECT_TRUE(logSays("didFailLoadWithError for URL " + site.address("/signin")));
}

INSTANTIATE_TEST_SUITE_P(OfThe, KilledProcessTest, testing::Values("WebKitWebProces", "WebKitNetworkPr"),
                         [](const auto& each) { return std::string(each.param); });

TEST_F(LoadFailureTest, CredentialsOfAnAddressAreNotLogged) {
  options.signIn = closedPort.address("/signin?Code=secret&state=kept#access_token=secret");
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_THAT(logLines(), Not(Contains(HasSubstr("secret"))));
  expectFailureInTheLog(closedPort.address("/signin?Code=…&state=kept#access_token=…"), -1004);
}

TEST_F(LoadFailureTest, ControlCharactersOfAnAddressAreEncoded) {
  options.signIn = "http://host\x1b[31m/";
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_THAT(logLines(), Not(Contains(HasSubstr("\x1b"))));
  EXPECT_THAT(logLines(), Contains(HasSubstr("%1B[31m")));
}

TEST_F(LoadFailureTest, AnAddressWithATokenIsNotLogged) {
  options.signIn = closedPort.address("/signin?token=eyJhbGc.eyJzdWI");
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_THAT(logLines(), Not(Contains(HasSubstr("eyJ"))));
  EXPECT_THAT(logLines(), Contains(testing::AllOf(HasSubstr("[WARN]"), HasSubstr("Log skipped."))));
}

TEST_F(LoadFailureTest, ARedirectPagesFailedFrameIsReported) {
  const RawServer server("good morning\r\n\r\n");
  site.serve("/signin", redirectTo(site.address("/done?code=1")));
  site.serve("/done", page("<iframe src='" + server.address("/frame") + "'></iframe>"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
}

}  // namespace
}  // namespace endtoend
