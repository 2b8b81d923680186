// The whole way from a page to a security key and back. A relying party of others verifies what the page gets.

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include "tests/endtoend/Processes.h"
#include "tests/endtoend/SecurityKeyTest.h"
#include "tests/support/Shell.h"

namespace endtoend {
namespace {

using testing::HasSubstr;

// A click starts the next step: the name of a function of `navigator.credentials`, and what changes its options.
// Reports the credential, or the name of the error, when the page has the focus back and so takes the next click.
constexpr char kSteps[] = R"(
  const text = (bytes) =>
      btoa(String.fromCharCode(...bytes)).replaceAll('+', '-').replaceAll('/', '_').replaceAll('=', '');
  const known = () => ({ allowCredentials: [{ type: 'public-key', id }] });
  let id;
  onclick = async () => {
    const [method, changes] = steps.shift();
    const options = (method === 'create' ? registration : signIn)(changes?.() ?? {});
    let outcome;
    try {
      const credential = await navigator.credentials[method](options);
      id = credential.rawId;
      const { response } = credential.toJSON();
      outcome = JSON.stringify({ challenge: text(options.publicKey.challenge), id: credential.id, ...response });
    } catch (error) {
      outcome = error.name;
    }
    if (!document.hasFocus()) await new Promise((resolve) => { onfocus = resolve });
    report(outcome);
  };
)";

constexpr char kAccepted[] = "accepted\n";

class SecurityKeyFlowTest : public SecurityKeyTest {
 protected:
  // `steps`: [["create"], ["get", known]]
  void startWith(const std::string& steps) { startAsking(std::string(kSteps) + "const steps = " + steps); }

  // Waits for the report of a step, and returns it.
  std::string outcome() {
    const std::size_t next = ++outcomes_;
    until("the outcome of a step", [&] { return reports().size() > next; });
    return reports()[next];
  }

  std::string step() {
    clickPage();
    return outcome();
  }

  // What the relying party says about a registration, and a sign-in with the same key.
  std::string verification(const std::string& registration, const std::string& signIn = "null") const {
    const std::string file = temporary("credentials.json");
    std::ofstream(file) << R"({"rpId":"localhost","userVerification":null,"origin":")" << onLocalhost("")
                        << R"(","registration":)" << registration << R"(,"assertion":)" << signIn << "}";
    return support::run("/usr/bin/python3 '" SVO_RELYING_PARTY "' < '" + file + "'").output;
  }

  // Types a PIN into a prompt that ends below this row. Returns where it ended.
  int enterPin(const std::string& pin, int row) {
    const int end = untilPromptEndsBelow(row);
    screen.type(pin);
    screen.press(XK_Return);
    return end;
  }

 private:
  std::size_t outcomes_ = 0;
};

TEST_F(SecurityKeyFlowTest, RegistersAndSignsIn) {
  keys.plug("a");
  startWith("[['create'], ['get', known]]");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  const std::string registration = outcome();
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  EXPECT_EQ(verification(registration, outcome()), kAccepted);
  untilLogSays("Security key: the registration has ended: registered");
  untilLogSays("Security key: the sign-in has ended: signed in");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, AKeyMayComeLate) {
  startWith("[['create']]");
  clickPage();
  untilPromptIsShown();
  keys.plug("a", R"("touched": true)");
  EXPECT_EQ(verification(outcome()), kAccepted);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, AKeyThatIsPulledOutMayReturn) {
  keys.plug("a");
  startWith("[['create']]");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.pull("a");
  keys.plug("a", R"("touched": true)");
  EXPECT_EQ(verification(outcome()), kAccepted);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, AWrongPinIsAskedAgain) {
  startWith("[['create', () => ({ authenticatorSelection: { userVerification: 'required' } })]]");
  clickPage();
  int end = untilPromptEndsBelow(0);
  keys.plug("a", R"("pin": "1234", "touched": true)");
  end = enterPin("4321", end);
  (void)enterPin("1234", end);
  EXPECT_EQ(verification(outcome()), kAccepted);
  for (const std::string& each : logMessages())
    EXPECT_EQ(each.find("1234"), std::string::npos) << each;
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// A key names accounts only to a user that it has verified.
TEST_F(SecurityKeyFlowTest, TheUserChoosesAnAccount) {
  constexpr char kVerifying[] = R"("touched": true, "builtIn": [0])";
  startWith(R"([['create', () => account(1)], ['create', () => account(2)], ['get', () => verified]];
    const verified = { userVerification: 'required' };
    const account = (first) => ({ user: { id: new Uint8Array([first]), name: 'user' + first, displayName: '' },
                                  authenticatorSelection: { residentKey: 'required', ...verified } }))");
  keys.plug("a", kVerifying);
  const std::string first = step();
  EXPECT_THAT(step(), HasSubstr(R"("attestationObject")"));
  keys.pull("a");
  clickPage();
  const int end = untilPromptEndsBelow(0);
  keys.plug("a", kVerifying);
  (void)untilPromptEndsBelow(end);
  screen.press(XK_Down);
  screen.press(XK_Return);
  const std::string signIn = outcome();
  EXPECT_THAT(signIn, HasSubstr(R"("userHandle":"AQ")"));  // the newest one is the first
  EXPECT_EQ(verification(first, signIn), kAccepted);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, CancelEndsTheWaitOfTheKey) {
  keys.plug("a");
  startWith("[['create']]");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  replyWith(XK_Escape);
  EXPECT_EQ(outcome(), "NotAllowedError");
  EXPECT_TRUE(keys.waitFor("cancelled a"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, ClosingTheWindowEndsTheWaitOfTheKey) {
  keys.plug("a");
  startWith("[['create']]");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_TRUE(keys.waitFor("cancelled a"));
}

TEST_F(SecurityKeyFlowTest, ANavigationEndsTheWaitOfTheKey) {
  site.serve("/next", pageWith(""));
  keys.plug("a");
  startWith(
      "[['create']]; addEventListener('click', () => setTimeout(() => "
      "fetch('/go').then(() => { location = '/next' })))");
  site.serve("/go", page(""));
  site.hold("/go");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  site.release("/go");
  EXPECT_TRUE(keys.waitFor("cancelled a"));
  untilRequested("/next");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, AnAbortEndsTheWaitOfTheKey) {
  site.serve("/go", page(""));
  site.hold("/go");
  keys.plug("a");
  startAsking(R"(onclick = () => {
    const controller = new AbortController();
    tell(navigator.credentials.create({ ...registration(), signal: controller.signal }));
    fetch('/go').then(() => controller.abort());
  })");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  site.release("/go");
  untilReported("AbortError");
  EXPECT_TRUE(keys.waitFor("cancelled a"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, AKilledPageEndsTheWaitOfTheKey) {
  keys.plug("a");
  startWith("[['create']]");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  const auto process = descendantNamed(run->pid(), "WebKitWebProces");
  ASSERT_TRUE(process);
  kill(*process, SIGKILL);
  EXPECT_EQ(message(), kLoadFailed);
  EXPECT_TRUE(keys.waitFor("cancelled a"));
}

TEST_F(SecurityKeyFlowTest, AKilledProgramEndsTheRequest) {
  keys.plug("a");
  startWith("[['create'], ['create']]");
  clickPage();
  ASSERT_TRUE(keys.waitFor("waiting a"));
  const auto program = descendantNamed(run->pid(), "svo-signin-keys");
  ASSERT_TRUE(program);
  kill(*program, SIGKILL);
  EXPECT_EQ(outcome(), "NotAllowedError");
  ASSERT_TRUE(keys.waitFor("closed a"));
  keys.touch("a");
  EXPECT_EQ(verification(step()), kAccepted);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// WebKit hands a press that the page has not used back to GTK, after any time that the page wants.
TEST_F(SecurityKeyFlowTest, AKeyPressPermitsOneRequest) {
  site.serve("/busy", page(""));
  site.hold("/busy");
  keys.plug("a", R"("touched": true)");
  startAsking(R"(onkeydown = () => {
    onkeydown = null;
    tell(navigator.credentials.create(registration()))
        .then(() => tell(navigator.credentials.create(registration())));
    const busy = new XMLHttpRequest();
    busy.open('GET', '/busy', false);
    busy.send();
  })");
  screen.press(XK_Return);
  untilLogSays("Security key: the registration has ended: registered");
  untilPromptIsClosed();
  site.release("/busy");
  until("the end of both requests", [this] { return reports().size() == 3; });
  EXPECT_THAT(reports(), testing::ElementsAre("loaded", "granted", "NotAllowedError"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The page asks again without a click.
TEST_F(SecurityKeyFlowTest, TheReturnOfAPinPermitsNoRequest) {
  startAsking(R"(onpress(async () => {
    const verified = { authenticatorSelection: { userVerification: 'required' } };
    for (let i = 0; i < 2; ++i) await tell(navigator.credentials.create(registration(verified)));
  }))");
  clickPage();
  const int end = untilPromptEndsBelow(0);
  keys.plug("a", R"("pin": "1234", "touched": true)");
  (void)enterPin("1234", end);
  untilReported("NotAllowedError");
  EXPECT_THAT(reports(), testing::ElementsAre("loaded", "granted", "NotAllowedError"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, AKeyMayBePulledOutAtItsPin) {
  startWith("[['create', () => ({ authenticatorSelection: { userVerification: 'required' } })]]");
  clickPage();
  const int end = untilPromptEndsBelow(0);
  keys.plug("a", R"("pin": "1234", "touched": true)");
  (void)untilPromptEndsBelow(end);
  keys.pull("a");
  screen.type("1234");
  screen.press(XK_Return);
  until("the prompt without a PIN", [&] { return promptIn(picture()).end <= end; });
  replyWith(XK_Escape);
  EXPECT_EQ(outcome(), "NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyFlowTest, ALockedPinIsReported) {
  startWith("[['create', () => ({ authenticatorSelection: { userVerification: 'required' } })]]");
  clickPage();
  int end = untilPromptEndsBelow(0);
  keys.plug("a", R"("pin": "1234", "tries": 1, "touched": true)");
  end = enterPin("4321", end);
  until("the prompt without a PIN", [&] { return showsPrompt(picture()) && promptIn(picture()).end < end; });
  replyWith(XK_Escape);
  EXPECT_EQ(outcome(), "NotAllowedError");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// Both documents listen for replies to the one before. A click is lost while the new page is not shown yet. No fetch is
// under way when a document is left: in WebKitGTK 2.54 one such cancellation in some 400 corrupted the memory of the
// network process, and the next load failed.
TEST_F(SecurityKeyFlowTest, AReplyReachesNoOtherDocument) {
  constexpr std::ptrdiff_t kTimes = 25;
  site.serve("/asked", page(""));
  site.serve("/next", page("<script>addEventListener('svo-credentials-reply', () => fetch('/leak'));"
                           "onload = () => setTimeout(() => { location = '" +
                           onLocalhost("/signin") + "' })</script>"));
  keys.plug("a", R"("touched": true)");
  startAsking(R"(
    let hasAsked = false;
    addEventListener('svo-credentials-reply', () => hasAsked || fetch('/leak'));
    onclick = () => {
      if (hasAsked) return;
      hasAsked = true;
      navigator.credentials.create(registration()).catch(() => {});
      fetch('/asked').then(() => setTimeout(() => { location = ')" +
              site.address("/next") + R"(' }, Math.random() * 300));
    };)");
  const auto count = [&](const char* line) {
    const std::vector<std::string> all = site.requestLines();
    return std::count(all.begin(), all.end(), line);
  };
  for (std::ptrdiff_t i = 1; i <= kTimes; ++i) {
    until("the first page", [&] { return count("GET /report?what=loaded") >= i; });
    do {
      clickPage();
    } while (!tools::waitUntil([&] { return count("GET /asked") == i; }, std::chrono::milliseconds(100)));
  }
  EXPECT_FALSE(site.wasRequested("GET /leak"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

struct KeyCase {
  const char* name;
  const char* key;    // options of the key
  const char* steps;  // of the page
  const char* outcome;
};

void PrintTo(const KeyCase& each, std::ostream* out) {
  *out << each.name;
}

class KeyKindTest : public SecurityKeyFlowTest, public testing::WithParamInterface<KeyCase> {};

TEST_P(KeyKindTest, EndsLikeThis) {
  keys.plug("a", GetParam().key + std::string(R"(, "touched": true)"));
  startWith(GetParam().steps);
  const std::string registration = step();
  const std::string second = step();
  EXPECT_EQ(second.front() == '{' ? verification(registration, second) : second, GetParam().outcome);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

constexpr char kBoth[] = "[['create'], ['get', known]]";

INSTANTIATE_TEST_SUITE_P(
    Keys, KeyKindTest,
    testing::Values(
        KeyCase{"U2f", R"("u2f": true)", kBoth, kAccepted}, KeyCase{"Version20", R"("version": 2.0)", kBoth, kAccepted},
        KeyCase{"EdDsa", R"("algorithms": [-8])",
                "[['create', () => ({ pubKeyCredParams: [{ type: 'public-key', alg: -8 }] })], ['get', known]]",
                kAccepted},
        KeyCase{"Rs256", R"("algorithms": [-257])",
                "[['create', () => ({ pubKeyCredParams: [{ type: 'public-key', alg: -257 }] })], ['get', known]]",
                kAccepted},
        KeyCase{"ResidentKey", R"("version": 2.1)",
                "[['create', () => ({ authenticatorSelection: { residentKey: 'required' } })], ['get']]", kAccepted},
        KeyCase{"KnownAlready", R"("version": 2.1)",
                "[['create'], ['create', () => ({ excludeCredentials: known().allowCredentials })]]",
                "InvalidStateError"},
        KeyCase{"NoPin", R"("version": 2.1)",
                "[['create'], ['create', () => ({ authenticatorSelection: { userVerification: 'required' } })]]",
                "ConstraintError"},
        KeyCase{"NoAlgorithm", R"("algorithms": [-7])",
                "[['create'], ['create', () => ({ pubKeyCredParams: [{ type: 'public-key', alg: -8 }] })]]",
                "NotSupportedError"},
        KeyCase{"UnknownCredential", R"("version": 2.1)",
                "[['create'], ['get', () => ({ allowCredentials: [{ type: 'public-key', id: new Uint8Array(48) }] })]]",
                "NotAllowedError"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace endtoend
