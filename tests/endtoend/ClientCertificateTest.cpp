// Which server gets which certificate.

#include "tests/endtoend/ClientCertificateTest.h"

namespace endtoend {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

constexpr char kDeclined[] = "A server asked for a client certificate: the user chose none";

TEST_F(ClientCertificateTest, TheChosenCertificateSignsIn) {
  addToken("Card", "Ada");
  secure.askForCertificates(G_TLS_AUTHENTICATION_REQUIRED);
  startFocused();
  EXPECT_EQ(withoutMarks(untilReady(ATSPI_ROLE_ALERT, "127").name), "127.0.0.1 asks for a certificate");
  EXPECT_THAT(withoutMarks(untilReady(ATSPI_ROLE_PUSH_BUTTON, "Ada").name),
              testing::MatchesRegex("Ada\nIssued by \u201CExample Organization\u201D, valid until ....-..-..\n"
                                    "On \u201CCard\u201D"));
  choose("Ada");
  enterPin(kPin);
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(owners(), AllOf(Not(IsEmpty()), Each("CN=Ada")));
}

TEST_F(ClientCertificateTest, TheSecondTokensCertificateSignsIn) {
  addToken("Card 1", "Ada");
  addToken("Card 2", "Bob");
  startFocused();
  (void)untilReady(ATSPI_ROLE_PUSH_BUTTON, "Cancel");
  ASSERT_THAT(choices(), UnorderedElementsAre("Ada", "Bob"));
  const std::string lastChoice = choices().back();
  choose(lastChoice);
  enterPin(kPin);
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(owners(), Each("CN=" + lastChoice));
}

TEST_F(ClientCertificateTest, AWrongPinIsAskedForAgain) {
  addToken("Card", "Ada");
  startFocused();
  choose("Ada");
  enterPin("9999");
  (void)untilReady(ATSPI_ROLE_LABEL, "That PIN was not right. Only a few tries are left.");
  enterPin(kPin);
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(owners(), Each("CN=Ada"));
}

TEST_F(ClientCertificateTest, CancelContinuesWithoutACertificate) {
  addToken("Card", "Ada");
  startFocused();
  cancelPrompt(ATSPI_ROLE_PUSH_BUTTON, "Ada");
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(owners(), Each(""));
  EXPECT_THAT(logMessages(), Contains(kDeclined).Times(1));
}

TEST_F(ClientCertificateTest, CancelAtThePinContinuesWithoutACertificate) {
  addToken("Card", "Ada");
  startFocused();
  choose("Ada");
  cancelPrompt(ATSPI_ROLE_PASSWORD_TEXT, "PIN");
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(owners(), Each(""));
}

TEST_F(ClientCertificateTest, AMissingTokenCanBeInsertedAgain) {
  addToken("Card", "Ada");
  startFocused();
  choose("Ada");
  (void)untilReady(ATSPI_ROLE_PASSWORD_TEXT, "PIN");
  tokens.removeAll();
  enterPin(kPin);
  (void)untilReady(ATSPI_ROLE_LABEL, "\u201CCard\u201D cannot be used. Is it still there?");
  (void)untilReady(ATSPI_ROLE_PUSH_BUTTON, "OK");
  addToken("Card 2", "Bob");
  screen.press(XK_Return);
  choose("Bob");
  enterPin(kPin);
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(owners(), Each("CN=Bob"));
}

TEST_F(ClientCertificateTest, WithoutATokenThePageLoads) {
  EXPECT_EQ(messageOfARun(), result(secure.address("/done?code=1")));
  EXPECT_THAT(logMessages(), Contains(kNoToken).Times(1));
}

TEST_F(ClientCertificateTest, WithoutATokenARequiredCertificateFails) {
  secure.askForCertificates(G_TLS_AUTHENTICATION_REQUIRED);
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_THAT(logMessages(), Contains(kNoToken));
  EXPECT_THAT(logMessages(), Contains("didFailProvisionalLoadWithError Error code -1200"));
}

TEST_F(ClientCertificateTest, AnOpenPromptDoesNotBlockClosing) {
  addToken("Card", "Ada");
  startFocused();
  (void)untilReady(ATSPI_ROLE_PUSH_BUTTON, "Ada");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(ClientCertificateTest, AFrameOfAnotherSiteGetsNoPrompt) {
  addToken("Card", "Ada");
  other.askForCertificates(G_TLS_AUTHENTICATION_REQUESTED);
  other.serve("/frame", redirectTo(other.address("/framed")));
  site.serve("/signin", page("<iframe src='" + other.address("/frame") + "'></iframe>"));
  options.signIn = site.address("/signin");
  startFocused();
  until("the frame", [&] { return other.wasRequested("GET /framed"); });
  EXPECT_THAT(choices(), IsEmpty());
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_EQ(other.requests().front().certificate, "");
}

TEST_F(ClientCertificateTest, AnotherSiteNeedsAChoiceOfItsOwn) {
  addToken("Card", "Ada");
  other.askForCertificates(G_TLS_AUTHENTICATION_REQUESTED);
  other.serve("/staff", redirectTo(secure.address("/done?code=2")));
  secure.serve("/signin", redirectTo(other.address("/staff")));
  startFocused();
  choose("Ada");
  enterPin(kPin);
  until("the first site", [&] { return secure.wasRequested("GET /signin"); });
  cancelPrompt(ATSPI_ROLE_PUSH_BUTTON, "Ada");
  EXPECT_EQ(message(), result(secure.address("/done?code=2")));
  EXPECT_THAT(owners(), Each("CN=Ada"));
  EXPECT_EQ(other.requests().front().certificate, "");
}

// A server that has both names could resume the TLS session of the first.
TEST_F(ClientCertificateTest, AnotherNameNeedsAChoiceOfItsOwn) {
  addToken("Card", "Ada");
  const Certificate both = organization.sign("one.localhost,DNS:two.localhost", temporary("both.crt"));
  LoopbackServer server(both.get());
  server.askForCertificates(G_TLS_AUTHENTICATION_REQUESTED);
  const auto at = [&](const std::string& host, const std::string& target) {
    const std::string address = server.address(target);
    return "https://" + host + address.substr(address.rfind(':'));
  };
  server.serve("/first", redirectTo(at("two.localhost", "/second")));
  server.serve("/second", redirectTo(at("one.localhost", "/third")));
  server.serve("/third", page("done"));
  options.signIn = at("one.localhost", "/first");
  options.redirect = at("one.localhost", "/third");
  startFocused();
  choose("Ada");
  enterPin(kPin);
  until("the first name", [&] { return server.wasRequested("GET /first"); });
  cancelPrompt(ATSPI_ROLE_PUSH_BUTTON, "Ada");
  EXPECT_EQ(message(), result(at("one.localhost", "/third")));
  EXPECT_THAT(ownersAt(server), ElementsAre("CN=Ada", "", "CN=Ada"));
  run.reset();
}

// As with cookies. The embedding page cannot read it.
TEST_F(ClientCertificateTest, AChosenServerKnowsTheUserWhenEmbedded) {
  addToken("Card", "Ada");
  other.serve("/staff", page("<img src='" + secure.address("/image") + "'>"));
  secure.serve("/signin", redirectTo(other.address("/staff")));
  startFocused();
  choose("Ada");
  enterPin(kPin);
  until("the image", [&] { return secure.wasRequested("GET /image"); });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(owners(), Each("CN=Ada"));
  EXPECT_EQ(other.requests().front().certificate, "");
}

TEST_F(ClientCertificateTest, ThePinIsWrittenNowhere) {
  addToken("Card", "Ada");
  startFocused();
  choose("Ada");
  enterPin(kPin);
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(logLines(), Each(Not(HasSubstr(kPin))));
  EXPECT_THAT(run->standardError(), Not(HasSubstr(kPin)));
  EXPECT_THAT(filesInHome(), ElementsAre("Library", "Library/Logs", "Library/Logs/Kelvo.log"));
}

}  // namespace
}  // namespace endtoend
