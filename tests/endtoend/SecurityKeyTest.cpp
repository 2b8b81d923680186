// Who may ask for a security key, and the prompt. No key is plugged in.

#include "tests/endtoend/SecurityKeyTest.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tests/endtoend/Certificate.h"
#include "tests/endtoend/Proxy.h"
#include "tests/endtoend/SystemRoots.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

constexpr char kReportInterface[] = R"(<script>
  report([typeof PublicKeyCredential, typeof navigator.credentials, typeof webkit].join(' '));
</script>)";

TEST_F(SecurityKeyTest, APageOfThisMachineHasTheInterface) {
  startAsking(R"(
    const all = [PublicKeyCredential.isUserVerifyingPlatformAuthenticatorAvailable(),
                 PublicKeyCredential.isConditionalMediationAvailable(), navigator.credentials.get({ password: true })];
    report(`${typeof PublicKeyCredential} ${String(navigator.credentials)}`);
    Promise.all(all).then((each) => report(each.join()));
  )");
  untilReported("function [object CredentialsContainer]");
  untilReported("false,false,");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// As those of every interface of Web IDL: pages copy credentials with loops.
TEST_F(SecurityKeyTest, MembersAreEnumerable) {
  startAsking(R"(
    const names = [];
    for (const each in PublicKeyCredential.prototype) names.push(each);
    report(names.sort().join());
    report(Object.keys(PublicKeyCredential).sort().join());
  )");
  untilReported("authenticatorAttachment,getClientExtensionResults,id,rawId,response,toJSON,type");
  untilReported(
      "getClientCapabilities,isConditionalMediationAvailable,isUserVerifyingPlatformAuthenticatorAvailable,"
      "parseCreationOptionsFromJSON,parseRequestOptionsFromJSON");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, NullIsAnEmptyRequest) {
  startAsking("tell(navigator.credentials.create(null)); navigator.credentials.get(null).then((each) => report(each))");
  untilReported("NotSupportedError");
  untilReported("null");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, ABufferMayBeOfAnotherFrame) {
  startAsking(R"(
    const frame = document.documentElement.appendChild(document.createElement('iframe'));
    frame.hidden = true;
    onpress(() => tell(navigator.credentials.get(signIn({ challenge: new frame.contentWindow.ArrayBuffer(32) }))));
  )");
  clickPage();
  replyWith(XK_Escape);
  untilReported("NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, FramesHaveNoInterface) {
  site.serve("/frame", pageWith(kReportInterface));
  startOn("<iframe src='/frame'></iframe><iframe src='" + site.address("/frame") + "'></iframe>");
  until("two reports of each page, one of the top", [&] { return reports().size() == 5; });
  std::vector<std::string> all = reports();
  all.erase(std::remove(all.begin(), all.end(), "loaded"), all.end());
  EXPECT_THAT(all, ElementsAre("undefined undefined undefined", "undefined undefined undefined"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// `location.origin` of a sandboxed document is that of the site; `self.origin` is not.
TEST_F(SecurityKeyTest, ASandboxedDocumentHasNoInterface) {
  tools::Response sandboxed = pageWith(kReportInterface);
  sandboxed.headers["Content-Security-Policy"] = "sandbox allow-scripts";
  sandboxed.headers["Access-Control-Allow-Origin"] = "*";
  site.serve("/signin", sandboxed);
  start();
  untilReported("undefined undefined undefined");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, APageOverPlainHttpHasNoInterface) {
  const Proxy proxy(site);
  options.environment.merge(proxy.environment());
  options.signIn = "http://signin.example/signin";
  startOn(kReportInterface);
  untilReported("undefined undefined undefined");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, ARequestNeedsAClick) {
  startAsking("tell(navigator.credentials.get(signIn()))");
  untilReported("NotAllowedError");
  EXPECT_FALSE(showsPrompt(picture()));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, NullIsAnEmptySelection) {
  startAsking(
      "onpress(() => tell(navigator.credentials.create(registration({ authenticatorSelection: null, extensions: null "
      "}))))");
  clickPage();
  replyWith(XK_Escape);
  untilReported("NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, AClickPermitsOneRequest) {
  startAsking(
      "onpress(async () => { await tell(navigator.credentials.get(signIn()));"
      " await report('again'); tell(navigator.credentials.create(registration())) })");
  clickPage();
  replyWith(XK_Escape);
  untilReported("again");
  until("both reports", [&] { return reports().size() == 4; });
  EXPECT_THAT(reports(), ElementsAre("loaded", "NotAllowedError", "again", "NotAllowedError"));
  untilPromptIsClosed();
  untilLogSays("Security key: a sign-in has begun");
  untilLogSays("Security key: the sign-in has ended: NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, TheWindowClosesDuringARequest) {
  startAsking("onpress(() => tell(navigator.credentials.create(registration())))");
  clickPage();
  untilPromptIsShown();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, AnAbortedRequestClosesThePrompt) {
  startAsking(R"(onpress(() => {
    const controller = new AbortController();
    tell(navigator.credentials.get({ ...signIn(), signal: controller.signal }));
    setTimeout(() => fetch('/abort').then(() => controller.abort()));
  }))");
  site.serve("/abort", page(""));
  site.hold("/abort");
  clickPage();
  untilPromptIsShown();
  site.release("/abort");
  untilReported("AbortError");
  untilPromptIsClosed();
  untilLogSays("Security key: the sign-in has ended: AbortError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, AnotherRequestMeanwhileIsRefused) {
  startAsking(R"(onpress(() => {
    tell(navigator.credentials.get(signIn()));
    navigator.credentials.get(signIn()).catch((error) => report('second ' + error.name));
  }))");
  clickPage();
  untilReported("second NotAllowedError");
  replyWith(XK_Escape);
  untilReported("NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, ANavigationEndsTheRequest) {
  site.serve("/next", pageWith(""));
  site.serve("/go", page(""));
  site.hold("/go");
  site.hold("/next");
  startAsking(
      "onpress(() => { tell(navigator.credentials.get(signIn()));"
      " fetch('/go').then(() => { location = '/next' }) })");
  clickPage();
  untilPromptIsShown();
  site.release("/go");
  untilRequested("/next");
  untilPromptIsClosed();  // before the server has responded
  site.release("/next");
  untilLogSays("Security key: the sign-in has ended: NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, AClickIsForOnePageOnly) {
  site.serve("/next", pageWith(kTools + std::string("<script>tell(navigator.credentials.get(signIn()))</script>")));
  startAsking("onpress(() => { location = '/next' })");
  clickPage();
  untilReported("NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyTest, APageThatIsLeftMayNotAsk) {
  site.serve("/next", pageWith(""));
  site.hold("/next");
  startAsking(R"(
    onkeydown = () => {
      navigator.credentials.get(signIn()).catch((error) => navigator.sendBeacon('/report?what=' + error.name));
    };
    onpress(() => { location = '/next' });
  )");
  clickPage();
  untilRequested("/next");
  screen.press(XK_Return);
  untilReported("NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// A page over TLS, with a domain.
class KeyDomainTest : public SecurityKeyTest {
 protected:
  void SetUp() override {
    const auto wrapper = withSystemRoots(organization_.file());
    if (!wrapper) GTEST_SKIP() << "no mount namespace or no root certificates";
    options.wrapper = *wrapper;
    proxy_.tunnelTo(secure_);
    options.environment.merge(proxy_.environment());
    options.signIn = "https://login.shop.example.org/signin";
  }

  void TearDown() override { run.reset(); }

  // Clicks a page that asks to sign in at this relying party.
  void ask(const std::string& rpId) {
    secure_.serve("/signin",
                  pageWith(kTools + ("<script>onclick = () => tell(navigator.credentials.get(signIn({ rpId: '" + rpId +
                                     "' })))</script>")));
    start();
    screen.focus(window().id);
    until("the page", [this] { return !reportsTo(secure_).empty(); });
    untilPainted();
    clickPage();
  }

  void untilRefused() {
    until("the error", [this] { return reportsTo(secure_).back() == "SecurityError"; });
    EXPECT_FALSE(showsPrompt(picture()));
  }

 private:
  const Authority organization_{temporary("organization.crt")};
  const Certificate certificate_ = organization_.sign("login.shop.example.org", temporary("signin.crt"));
  LoopbackServer secure_{certificate_.get()};
  Proxy proxy_{site};
};

TEST_F(KeyDomainTest, APageMayNameItsRegistrableDomain) {
  ask("example.org");
  untilPromptIsShown();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(KeyDomainTest, APageMayNotNameAPublicSuffix) {
  ask("org");
  untilRefused();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(KeyDomainTest, APageMayNotNameASibling) {
  ask("pay.shop.example.org");
  untilRefused();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// A page and the error of its request, after a click.
class RefusedRequestTest : public SecurityKeyTest, public testing::WithParamInterface<Named> {};

TEST_P(RefusedRequestTest, ShowsNoPrompt) {
  startAsking(std::string("onpress(async () => { ") + GetParam().script + " })");
  clickPage();
  until("a report", [&] { return reports().size() == 2; });
  EXPECT_EQ(reports().back(), std::string(GetParam().name).substr(std::string(GetParam().name).find('_') + 1));
  EXPECT_FALSE(showsPrompt(picture()));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(
    Options, RefusedRequestTest,
    testing::Values(
        Named{"OtherSite_SecurityError", "tell(navigator.credentials.get(signIn({ rpId: 'example.com' })))"},
        Named{"Address_SecurityError",
              "tell(navigator.credentials.create(registration({ rp: { id: '127.0.0.1', name: '' } })))"},
        Named{"EmptyRelyingParty_SecurityError", "tell(navigator.credentials.get(signIn({ rpId: '' })))"},
        Named{"AppIdOfOtherSite_SecurityError",
              "tell(navigator.credentials.get(signIn({ extensions: { appid: 'https://example.com/id' } })))"},
        Named{"AppIdOfARegistration_NotSupportedError",
              "tell(navigator.credentials.create(registration({ extensions: { appid: 'https://localhost/id' } })))"},
        Named{"AppIdThatIsNoAddress_SecurityError",
              "tell(navigator.credentials.get(signIn({ extensions: { appid: 'localhost' } })))"},
        Named{
            "UnknownAlgorithms_NotSupportedError",
            "tell(navigator.credentials.create(registration({ pubKeyCredParams: [{ type: 'public-key', alg: 0 }] })))"},
        Named{"PlatformKey_NotAllowedError",
              "tell(navigator.credentials.create(registration({"
              " authenticatorSelection: { authenticatorAttachment: 'platform' } })))"},
        Named{
            "LongUserId_TypeError",
            "tell(navigator.credentials.create(registration({ user: { id: bytes(65), name: '', displayName: '' } })))"},
        Named{"MissingChallenge_TypeError", "tell(navigator.credentials.get({ publicKey: {} }))"},
        Named{"ChallengeOfText_TypeError", "tell(navigator.credentials.get(signIn({ challenge: 'text' })))"},
        Named{"HugeChallenge_TypeError",
              "tell(navigator.credentials.get(signIn({ challenge: new Uint8Array(1 << 20) })))"},
        Named{"ManyCredentials_NotAllowedError",
              "tell(navigator.credentials.get(signIn({ allowCredentials:"
              " Array(65).fill({ type: 'public-key', id: new Uint8Array(8) }) })))"},
        Named{"PasswordCreation_NotSupportedError", "tell(navigator.credentials.create({ password: {} }))"},
        Named{"AbortedByAGetter_AbortError",
              "const ending = new AbortController(); tell(navigator.credentials.get({ signal: ending.signal,"
              " publicKey: { get challenge() { ending.abort(); return bytes(32) } } }))"},
        Named{"AbortedBefore_AbortError",
              "tell(navigator.credentials.get({ ...signIn(), signal: AbortSignal.abort() }))"}),
    nameOf);

}  // namespace
}  // namespace endtoend
