// Prompts for the name and password of HTTP authentication.

#include <signal.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/endtoend/Processes.h"
#include "tests/endtoend/PromptTest.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

// The Authorization header for a name and a password.
//   basic("ada:pw")  => "Basic YWRhOnB3"
std::string basic(const std::string& nameAndPassword) {
  char* const coded = g_base64_encode(reinterpret_cast<const guchar*>(nameAndPassword.data()), nameAndPassword.size());
  const std::string header = std::string("Basic ") + coded;
  g_free(coded);
  return header;
}

class PasswordTest : public PromptTest {
 protected:
  // Serves a page at `path` that reports "in <path>" for `nameAndPassword`, otherwise one that reports "refused
  // <path>".
  void protect(const std::string& path, const std::string& nameAndPassword) { protect(site, path, nameAndPassword); }

  void protect(LoopbackServer& server, const std::string& path, const std::string& nameAndPassword) {
    server.serve(path, [this, path, nameAndPassword](const Request& request) {
      shown_.push_back(request.authorization);
      if (request.authorization == basic(nameAndPassword))
        return pageWith("<script>report('in " + path + "')</script>");
      tools::Response refusal = pageWith("<body style='height: 550px'><script>report('refused " + path +
                                         "'); onclick = () => report('clicked')</script>");
      refusal.status = 401;
      refusal.headers["WWW-Authenticate"] = "Basic realm=\"" + path + "\"";
      return refusal;
    });
  }

  void startOnProtected(const std::string& nameAndPassword) {
    protect("/signin", nameAndPassword);
    start();
    screen.focus(window().id);
    untilShown(1);
  }

  // The credentials of each request for a protected page, in order.
  const std::vector<std::string>& shown() const { return shown_; }

  void untilShown(std::size_t count) {
    until("the request", [&] { return shown_.size() >= count; });
  }

  void enter(const std::string& name, const std::string& password) {
    untilPromptTakesInput();
    screen.type(name);
    screen.press(XK_Tab);
    screen.type(password);
    screen.press(XK_Return);
  }

  bool isKept(const std::string& secret) const {
    for (const std::filesystem::path& root :
         {homeFolder(), std::filesystem::path(g_get_user_runtime_dir()), std::filesystem::temp_directory_path()}) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        if (text.find(secret) != std::string::npos) return true;
      }
    }
    return false;
  }

 private:
  std::vector<std::string> shown_;
};

TEST_F(PasswordTest, CorrectCredentialsContinue) {
  startOnProtected("ada.l:Correct-Horse-7");
  enter("ada.l", "Correct-Horse-7");
  untilReported("in /signin");
  EXPECT_THAT(shown(), ElementsAre("", basic("ada.l:Correct-Horse-7")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_FALSE(isKept("Correct-Horse-7"));
  EXPECT_FALSE(isKept(basic("ada.l:Correct-Horse-7").substr(6)));
  EXPECT_FALSE(isKept("ada.l"));
}

TEST_F(PasswordTest, WrongCredentialsShowThePromptAgain) {
  startOnProtected("ada:right");
  const int end = untilPromptEndsBelow(0);
  enter("ada", "wrong");
  untilShown(2);
  (void)untilPromptEndsBelow(end);
  enter("ada", "right");
  untilReported("in /signin");
  EXPECT_THAT(shown(), ElementsAre("", basic("ada:wrong"), basic("ada:right")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, ShiftTabReturnsToTheName) {
  startOnProtected("bob:pw");
  untilPromptTakesInput();
  screen.type("ada");
  screen.press(XK_Tab);
  screen.type("pw");
  screen.press(XK_Tab, {XK_Shift_L});
  screen.type("bob");
  screen.press(XK_Return);
  untilReported("in /signin");
  EXPECT_THAT(shown(), ElementsAre("", basic("bob:pw")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, CredentialsAreSentAsUtf8) {
  startOnProtected("\u0444\u00fc:\u03bb");
  untilPromptTakesInput();
  screen.press(XK_Cyrillic_ef);
  screen.press(XK_udiaeresis);
  screen.press(XK_Tab);
  screen.press(XK_Greek_lambda);
  screen.press(XK_Return);
  untilReported("in /signin");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, DecliningShowsTheServersPage) {
  startOnProtected("ada:pw");
  untilPromptTakesInput();
  screen.press(XK_Escape);
  untilReported("refused /signin");
  untilPromptIsClosed();
  clickAt(340, 500);
  untilReported("clicked");
  EXPECT_THAT(shown(), ElementsAre(""));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, TwoPromptsAreShownInTurn) {
  const std::string right = "/right/whose/name/is/so/long/that/the/prompt/needs/a/further/line/for/it";
  protect("/left", "ada:pw");
  protect(right, "bob:pw");
  site.hold("/go-on");
  startOn(
      "<script>const get = async (path) => report('status ' + (await fetch(path)).status);"
      "get('/left'); fetch('/go-on').then(() => get('" +
      right + "'))</script>");
  const int end = untilPromptEndsBelow(0);
  site.release("/go-on");
  untilShown(2);
  screen.press(XK_Escape);
  untilReported("status 401");
  (void)untilPromptEndsBelow(end);
  enter("bob", "pw");
  untilReported("status 200");
  EXPECT_THAT(shown(), ElementsAre("", "", basic("bob:pw")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// While it navigates away a page neither draws nor fetches. It can only detect that it was zoomed.
TEST_F(PasswordTest, ACancelledLoadClosesItsPrompt) {
  protect("/staff", "ada:pw");
  site.serve(
      "/next",
      pageWith("<body style='height: 550px'><script>onclick = () => report('clicked'); report('next')</script>"));
  startOn(
      "<script>const width = innerWidth; const look = setInterval(() => {"
      "  if (innerWidth < width) { clearInterval(look); location.href = '/next' } });"
      "onkeydown = () => { location.href = '/staff' }</script>");
  screen.press(XK_g);
  untilShown(1);
  untilPromptIsShown();
  screen.press(XK_plus, {XK_Control_L});
  untilReported("next");
  untilPromptIsClosed();
  clickAt(340, 400);
  untilReported("clicked");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// WebKit does not cancel a frame's request when its page is replaced.
TEST_F(PasswordTest, ANewPageClosesThePromptsOfFrames) {
  protect("/frame", "ada:pw");
  site.serve(
      "/next",
      pageWith("<body style='height: 550px'><script>onclick = () => report('clicked'); report('next')</script>"));
  site.serve("/signin", pageWith("<script>const width = innerWidth; const look = setInterval(() => {"
                                 "  if (innerWidth < width) { clearInterval(look); location.href = '/next' } "
                                 "})</script><iframe src='/frame'></iframe>"));
  start();
  screen.focus(window().id);
  untilShown(1);
  untilPromptIsShown();
  screen.press(XK_plus, {XK_Control_L});
  untilReported("next");
  untilPromptIsClosed();
  clickAt(340, 400);
  untilReported("clicked");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class OtherSiteTest : public PasswordTest {
 protected:
  void protectOther(const std::string& path) { protect(other, path, "ada:pw"); }

  void untilReportedToOther(const std::string& text) {
    until("the report " + text, [&] { return testing::Matches(testing::Contains(text))(reportsTo(other)); });
  }

  LoopbackServer other;
};

TEST_F(OtherSiteTest, AFrameGetsNoPrompt) {
  protectOther("/frame");
  startOn("<iframe src='" + other.address("/frame") + "'></iframe>");
  untilReportedToOther("refused /frame");
  EXPECT_THAT(shown(), ElementsAre(""));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(OtherSiteTest, AnImageGetsNoPrompt) {
  protectOther("/image");
  startOn("<img src='" + other.address("/image") + "' onerror='report(`no image`)'>");
  untilReported("no image");
  EXPECT_THAT(shown(), ElementsAre(""));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(OtherSiteTest, APageGetsItsPrompt) {
  protectOther("/staff");
  startOn("<script>onkeydown = () => { location.href = '" + other.address("/staff") + "' }</script>");
  screen.press(XK_g);
  enter("ada", "pw");
  untilReportedToOther("in /staff");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(OtherSiteTest, ARedirectedPageGetsItsPrompt) {
  protectOther("/staff");
  site.serve("/signin", redirectTo(other.address("/staff")));
  start();
  screen.focus(window().id);
  enter("ada", "pw");
  untilReportedToOther("in /staff");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, AnOpenPromptDoesNotBlockClosing) {
  startOnProtected("ada:pw");
  untilPromptIsShown();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// Each request that has no reply is cancelled while the window closes.
TEST_F(PasswordTest, PromptsThatWaitDoNotDisturbClosing) {
  constexpr std::size_t kRequests = 4;
  for (std::size_t i = 0; i < kRequests; ++i)
    protect("/image" + std::to_string(i), "ada:pw");
  startOn("<script>for (let i = 0; i < 4; ++i) fetch('/image' + i)</script>");
  untilShown(kRequests);
  untilPromptTakesInput();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, AnOpenPromptDoesNotBlockControlW) {
  startOnProtected("ada:pw");
  untilPromptTakesInput();
  screen.type("ada");
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
  EXPECT_THAT(shown(), ElementsAre(""));
}

TEST_F(PasswordTest, APageShowsFivePromptsPerUserInput) {
  std::string realm;
  site.serve("/image", [&realm](const Request&) {
    realm += " another line of text that the user has to read before the end of the long prompt";
    return tools::Response{401, "", {{"WWW-Authenticate", "Basic realm=\"" + realm + "\""}}};
  });
  startOn(
      "<script>onkeydown = async () => { onkeydown = null;"
      "  for (let i = 0; i < 9; ++i) await fetch('/image?' + i); report('through') }</script>");
  untilPainted();
  screen.press(XK_g);
  for (int question = 0, end = 0; question < 5; ++question) {
    end = untilPromptEndsBelow(end);
    screen.press(XK_Escape);
  }
  untilReported("through");
  untilPromptIsClosed();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, ACrashDuringAPromptEndsTheRun) {
  startOnProtected("ada:pw");
  untilPromptIsShown();
  const auto pageProcess = descendantNamed(run->pid(), "WebKitWebProces");
  ASSERT_TRUE(pageProcess);
  kill(*pageProcess, SIGKILL);
  EXPECT_EQ(message(), kLoadFailed);
}

}  // namespace
}  // namespace endtoend
