// Pages that attack the way from a page to a security key.

#include <signal.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/endtoend/Processes.h"
#include "tests/endtoend/SecurityKeyTest.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

// forge(request) sends an event like those of the program's own script and returns the reply to it.
constexpr char kForge[] = R"(
  const forge = (request) => new Promise((resolve) => {
    addEventListener('svo-credentials-reply', (event) => resolve(event.detail), { once: true });
    dispatchEvent(new CustomEvent('svo-credentials', { detail: request }));
  });
  const forged = (id, rpId) => JSON.stringify({ id, method: 'get', publicKey: { challenge: 'AAAA', rpId } });
)";

class SecurityKeyAttackTest : public SecurityKeyTest {};

TEST_F(SecurityKeyAttackTest, AFrameOfAnotherOriginReachesNothing) {
  const std::string attack = std::string("<script>") + kForge + R"(
    forge(forged('a')).then(() => report('reply in the frame'));
    try {
      parent.dispatchEvent(new CustomEvent('svo-credentials', { detail: forged('b') }));
      report('dispatched');
    } catch (error) {
      report('frame ' + error.name);
    }
  </script>)";
  site.serve("/frame", pageWith(attack));
  startAsking("onpress(() => document.body.append(Object.assign(document.createElement('iframe'), { src: '" +
              site.address("/frame") + "' })))");
  clickPage();
  untilReported("frame SecurityError");
  until("the frame's load", [&] { return reports().size() == 3; });
  EXPECT_THAT(reports(), testing::UnorderedElementsAre("loaded", "loaded", "frame SecurityError"));
  EXPECT_FALSE(showsPrompt(picture()));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyAttackTest, ASandboxedDocumentIsRefused) {
  tools::Response sandboxed =
      pageWith(std::string("<script>") + kForge + "onclick = () => forge(forged('a')).then(report)</script>");
  sandboxed.headers["Content-Security-Policy"] = "sandbox allow-scripts";
  site.serve("/signin", sandboxed);
  start();
  screen.focus(window().id);
  untilReported("loaded");
  clickPage();
  untilReported(R"({"id":"a","error":"NotAllowedError"})");
  EXPECT_FALSE(showsPrompt(picture()));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The page ends the request while the user types the PIN. Where the machine is so slow that the rest of it arrives
// after the delay, the page has it.
TEST_F(SecurityKeyAttackTest, ThePageGetsNoRestOfAPin) {
  site.serve("/abort", page(""));
  site.hold("/abort");
  startAsking(R"(
    onkeydown = (event) => report('key ' + event.key);
    onpress(async () => {
      const ending = new AbortController();
      const required = registration({ authenticatorSelection: { userVerification: 'required' } });
      tell(navigator.credentials.create({ ...required, signal: ending.signal }));
      await fetch('/abort');
      ending.abort();
    });)");
  clickPage();
  const int end = untilPromptEndsBelow(0);
  keys.plug("a", R"("pin": "123456", "touched": true)");
  (void)untilPromptEndsBelow(end);
  screen.type("123");
  const auto typed = std::chrono::steady_clock::now();
  site.release("/abort");
  untilReported("AbortError");
  screen.type("456");
  const auto pause = std::chrono::steady_clock::now() - typed;
  untilPromptIsClosed();
  screen.press(XK_Tab);
  untilReported("key Tab");
  if (pause < std::chrono::milliseconds(700)) {
    EXPECT_THAT(reports(), ElementsAre("loaded", "AbortError", "key Tab"));
  }
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyAttackTest, AnAlertDoesNotHideARequest) {
  site.serve("/ask", page(""));
  site.hold("/ask");
  startAsking(R"(onpress(async () => {
    tell(navigator.credentials.create(registration({ authenticatorSelection: { userVerification: 'required' } })));
    await fetch('/ask');
    alert('Touch the key to confirm the update.');
  }))");
  clickPage();
  const int end = untilPromptEndsBelow(0);
  keys.plug("a", R"("pin": "123456")");
  (void)untilPromptEndsBelow(end);
  site.release("/ask");
  screen.type("123456");
  screen.press(XK_Return);
  ASSERT_TRUE(keys.waitFor("waiting a"));
  screen.press(XK_Escape);
  EXPECT_TRUE(keys.waitFor("cancelled a"));
  until("the end of the alert", [this] {
    if (promptTakesInput()) screen.press(XK_Return);
    return reports().back() == "NotAllowedError";
  });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyAttackTest, AForgedRequestIsARequestOfThePage) {
  startAsking(std::string(kForge) + R"(onpress(async () => {
    await report(await forge(forged('a', 'example.com')));
    report(await forge(forged('b')));
  }))");
  clickPage();
  untilReported(R"({"id":"a","error":"SecurityError"})");
  replyWith(XK_Escape);
  untilReported(R"({"id":"b","error":"NotAllowedError"})");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyAttackTest, AReplayedRequestIsRefused) {
  startAsking(std::string(kForge) + R"(onpress(() => {
    dispatchEvent(new CustomEvent('svo-credentials', { detail: forged('a') }));
    forge(forged('a')).then(report);
  }))");
  clickPage();
  untilReported(R"({"id":"a","error":"NotAllowedError"})");
  untilPromptIsShown();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyAttackTest, MalformedRequestsAreIgnored) {
  startAsking(R"(onpress(() => {
    let replies = 0;
    addEventListener('svo-credentials-reply', () => ++replies);
    const id = 'a', method = 'get', publicKey = { challenge: 'AAAA' };
    const details = [
      undefined, null, 1, {}, { toString() { return '{}' } }, '', '{', '[]', '1', 'null', '"a"', '[['.repeat(60000),
      '{"a":'.repeat(40000), 'a'.repeat(300000), '\ud800', '\0',
      JSON.stringify({ method, publicKey }), JSON.stringify({ id: '', method, publicKey }),
      JSON.stringify({ id: '"},"b":{"', method, publicKey }), JSON.stringify({ id: 'a'.repeat(65), method, publicKey }),
      JSON.stringify({ id: 1, method, publicKey }), JSON.stringify({ id }), JSON.stringify({ id, method: 'delete' }),
      JSON.stringify({ id: 'other', method: 'cancel' }), `{"__proto__":{"id":"a","method":"get"}}`,
    ];
    for (const detail of details) dispatchEvent(new CustomEvent('svo-credentials', { detail }));
    dispatchEvent(new Event('svo-credentials'));
    navigator.credentials.get(signIn()).catch((error) => report(`${error.name} ${replies}`));
  }))");
  clickPage();
  replyWith(XK_Escape);
  untilReported("NotAllowedError 1");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyAttackTest, AGetterThatNavigatesGetsNoPrompt) {
  site.serve("/next", pageWith("<script>report('next')</script>"));
  startAsking(R"(onpress(() => navigator.credentials.get({ publicKey: {
    challenge: bytes(32), get rpId() { location = '/next'; return undefined; } } })))");
  clickPage();
  untilReported("next");
  untilPromptIsClosed();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SecurityKeyAttackTest, NoRequestBesideAnotherPrompt) {
  tools::Response locked;
  locked.status = 401;
  locked.headers["WWW-Authenticate"] = "Basic realm=\"x\"";
  site.serve("/locked", locked);
  startAsking(
      "onpress(() => { fetch('/locked'); addEventListener('blur', () => "
      "tell(navigator.credentials.get(signIn()))) })");
  clickPage();
  untilReported("NotAllowedError");
  untilPromptIsShown();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The window stays in use, or the page is stopped.
TEST_F(SecurityKeyAttackTest, AFloodOfRequestsDoesNotBlockTheWindow) {
  startAsking(R"(onpress(async () => {
    const detail = JSON.stringify({ id: 'a', method: 'get', publicKey: { challenge: 'A'.repeat(250000) } });
    await report('begins');
    for (;;) {
      for (let i = 0; i < 100; ++i) dispatchEvent(new CustomEvent('svo-credentials', { detail }));
      await new Promise((resolve) => setTimeout(resolve));
    }
  }))");
  clickPage();
  untilReported("begins");
  EXPECT_THAT(messageAfterClosing(), testing::AnyOf(kWindowClosed, kLoadFailed));
}

TEST_F(SecurityKeyAttackTest, AKilledPageProcessEndsTheRun) {
  startAsking("onpress(() => tell(navigator.credentials.get(signIn())))");
  clickPage();
  untilPromptIsShown();
  const auto process = descendantNamed(run->pid(), "WebKitWebProces");
  ASSERT_TRUE(process);
  kill(*process, SIGKILL);
  EXPECT_EQ(message(), kLoadFailed);
}

// Replaces what the page's script uses, or what says where the page is from.
class PoisonedPageTest : public SecurityKeyTest, public testing::WithParamInterface<Named> {};

TEST_P(PoisonedPageTest, CannotNameAnotherSite) {
  startAsking(std::string(GetParam().script) + R"(
    ;onclick = async () => {
      try { await navigator.credentials.get(signIn({ rpId: 'example.com' })) } catch {}
      fetch('/report?what=asked');
    };
  )");
  clickPage();
  untilReported("asked");
  EXPECT_FALSE(showsPrompt(picture()));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(
    Attacks, PoisonedPageTest,
    testing::Values(
        Named{"Origin", "Object.defineProperty(window, 'origin', { value: 'https://example.com' })"},
        Named{"Frames",
              "for (const name of ['webkit', 'self', 'origin', 'location', 'isSecureContext', 'CustomEvent'])"
              " document.head.append(Object.assign(document.createElement('iframe'), { name, id: name }));"},
        Named{"Forms",
              "for (const name of ['dispatchEvent', 'addEventListener', 'location', 'defaultView'])"
              " document.head.append(Object.assign(document.createElement('form'), { name }));"},
        Named{"Promises", "Promise.prototype.then = Promise.resolve = () => ({})"},
        Named{"Arrays",
              "Array.prototype[Symbol.iterator] = Array.from = Array.prototype.push = () => 'https://example.com'"},
        Named{"Buffers",
              "ArrayBuffer.isView = () => true; Object.defineProperty(ArrayBuffer, Symbol.hasInstance, { value: () => "
              "true })"},
        Named{"Json", "JSON.parse = JSON.stringify = () => '{}'"},
        Named{"Events",
              "CustomEvent = EventTarget.prototype.dispatchEvent = EventTarget.prototype.addEventListener = function "
              "() {}"},
        Named{"Members",
              "for (const name of ['id', 'error', 'rpId', 'type', 'length'])"
              " Object.defineProperty(Object.prototype, name, { get: () => 'localhost', set() {}, configurable: true "
              "})"}),
    nameOf);

}  // namespace
}  // namespace endtoend
