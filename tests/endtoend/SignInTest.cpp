// Sign-ins that end at the redirect address.

#include <algorithm>
#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/tools/hand/AutomatedInput.h"
#include "tests/tools/site/SignInSite.h"

namespace endtoend {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class SignInTest : public EndToEndTest {};

TEST_F(SignInTest, AUsersSignInSendsTheAddress) {
  tools::SignInSite example;
  options.signIn = example.signInAddress();
  options.redirect = example.redirectAddress();
  options.enterprise = example.enterpriseAddress();

  start();
  tools::AutomatedInput(example, display.name(), temporary("")).signIn();

  EXPECT_THAT(message(), StartsWith("<result><URL>" + example.redirectAddress() + "?code="));
  EXPECT_THAT(pipe.text(), testing::EndsWith("&amp;state=7f3a</URL></result>"));
  const std::vector<Request>& requests = example.server().requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[0].target, "/signin?state=7f3a");
  EXPECT_EQ(requests[1].method, "POST");
  EXPECT_EQ(requests[1].fields.at("user"), "ada");
  EXPECT_EQ(requests[1].fields.at("password"), "Correct-Horse-7");
  EXPECT_THAT(requests[2].target, StartsWith("/done?code="));
}

TEST_F(SignInTest, EachPageIsRequestedOnce) {
  site.serve("/signin", redirectTo(site.address("/done?code=1&state=2")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1&amp;state=2")));
  EXPECT_THAT(site.requestLines(), ElementsAre("GET /signin", "GET /done?code=1&state=2"));
}

TEST_F(SignInTest, TheAddressIsEscapedOnce) {
  site.serve("/signin", redirectTo(site.address("/done?a='b'&amp=%26amp;#part")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?a=%27b%27&amp;amp=%26amp;#part")));
}

TEST_F(SignInTest, TheRedirectAddressIsCaseSensitive) {
  options.redirect = site.address("/Done");
  site.serve("/signin", redirectTo(site.address("/Done?code=1")));
  site.serve("/Done", pageThatGoesTo(site.address("/done?code=2")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=2")));
}

TEST_F(SignInTest, AnHttpErrorPageIsAnOrdinaryPage) {
  tools::Response missing = pageThatGoesTo(site.address("/done?code=1"));
  missing.status = 404;
  site.serve("/signin", missing);
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1")));
}

TEST_F(SignInTest, ARedirectAddressWithStatus404IsAResult) {
  site.serve("/signin", redirectTo(site.address("/done/nowhere?code=1")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done/nowhere?code=1")));
}

TEST_F(SignInTest, TheRedirectAddressInAFrameIsIgnored) {
  site.serve("/signin", page("<iframe src='/done?code=1' onload=\"location.href = '/done?code=2'\"></iframe>"));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=2")));
  EXPECT_TRUE(site.wasRequested("GET /done?code=1"));
}

TEST_F(SignInTest, AFragmentIsNoFinishedLoad) {
  options.redirect = site.address("/signin#done");
  site.serve("/signin",
             page("<script>onload = () => setTimeout(() => { location.hash = 'done'; fetch('/loaded') })</script>"));
  start();
  untilRequested("/loaded");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SignInTest, AnAddressPushedAfterTheLoadIsIgnored) {
  site.serve("/signin", page("<script>onload = () => setTimeout(() => {"
                             "history.pushState(null, '', '/done?code=1'); fetch('/loaded') })</script>"));
  start();
  untilRequested("/loaded");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SignInTest, APostedFormSendsTheAddressOnly) {
  site.serve("/signin", page("<form method='post' action='/done?state=2'><input name='code' value='1'></form>"
                             "<script>document.forms[0].submit()</script>"));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?state=2")));
  EXPECT_EQ(site.requests().back().fields.at("code"), "1");
}

TEST_F(SignInTest, ALongAddressIsSentWhole) {
  const std::string code(60'000, 'x');
  site.serve("/signin", pageThatGoesTo(site.address("/done?code=" + code)));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=" + code)));
}

TEST_F(SignInTest, AnAddressLongerThanThePipeIsCut) {
  const std::string address = site.address("/done#" + std::string(80'000, 'x'));
  site.serve("/signin", pageThatGoesTo(address));
  EXPECT_EQ(messageOfARun(), result(address).substr(0, 65'536));
}

TEST_F(SignInTest, ATokenInTheAddressIsNotLogged) {
  site.serve("/signin", redirectTo(site.address("/done?token=eyJhbGc.eyJzdWI.sig")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?token=eyJhbGc.eyJzdWI.sig")));
  EXPECT_THAT(logLines(), testing::Each(testing::Not(HasSubstr("eyJ"))));
}

TEST_F(SignInTest, ASignInLogsTwoLines) {
  site.serve("/signin", redirectTo(site.address("/done")));
  messageOfARun();
  std::vector<std::string> messages = logMessages();
  const auto isAboutTheSandbox = [](const std::string& each) { return each.find("sandbox") != std::string::npos; };
  messages.erase(std::remove_if(messages.begin(), messages.end(), isAboutTheSandbox), messages.end());
  EXPECT_THAT(messages, ElementsAre("Build Version - 9.0.0.121", "Logging Level verbosity Set  to 4"));
}

TEST_F(SignInTest, ALogLineHasTenFields) {
  site.serve("/signin", redirectTo(site.address("/done")));
  messageOfARun();
  ASSERT_FALSE(logLines().empty());
  EXPECT_THAT(logLines().front(), MatchesRegex("[^ ]+ [^ ]+:[0-9]{3} \\| \\[INFO\\] \\|  \\| QSU \\| SVO \\| SVO \\|  "
                                               "\\|  \\| [0-9]+ \\| Build Version - 9\\.0\\.0\\.121"));
}

}  // namespace
}  // namespace endtoend
