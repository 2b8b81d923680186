// Name and password that a server asks for (HTTP authentication), on the window's sheet.

#include <signal.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/endtoend/Processes.h"
#include "tests/endtoend/SheetTest.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

// What a browser sends for a name and a password.
//   basic("ada:pw")  => "Basic YWRhOnB3"
std::string basic(const std::string& nameAndPassword) {
  char* const coded = g_base64_encode(reinterpret_cast<const guchar*>(nameAndPassword.data()), nameAndPassword.size());
  const std::string header = std::string("Basic ") + coded;
  g_free(coded);
  return header;
}

class PasswordTest : public SheetTest {
 protected:
  // Behind `path` lies a page that tells "in <path>"; whoever does not say `nameAndPassword` sees one that tells
  // "refused <path>".
  void protect(const std::string& path, const std::string& nameAndPassword) {
    site.serve(path, [this, path, nameAndPassword](const Request& request) {
      shown_.push_back(request.authorization);
      if (request.authorization == basic(nameAndPassword)) return pageWith("<script>tell('in " + path + "')</script>");
      tools::Answer refusal = pageWith("<body style='height: 550px'><script>tell('refused " + path +
                                       "'); onclick = () => tell('clicked')</script>");
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

  // What each request for a protected page had to show, in order.
  const std::vector<std::string>& shown() const { return shown_; }

  void untilShown(std::size_t count) {
    until("the request", [&] { return shown_.size() >= count; });
  }

  void enter(const std::string& name, const std::string& password) {
    untilSheetHangs();
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
  untilTold("in /signin");
  EXPECT_THAT(shown(), ElementsAre("", basic("ada.l:Correct-Horse-7")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_FALSE(isKept("Correct-Horse-7"));
  EXPECT_FALSE(isKept(basic("ada.l:Correct-Horse-7").substr(6)));
  EXPECT_FALSE(isKept("ada.l"));
}

TEST_F(PasswordTest, WrongCredentialsShowThePromptAgain) {
  startOnProtected("ada:right");
  enter("ada", "wrong");
  untilShown(2);
  enter("ada", "right");
  untilTold("in /signin");
  EXPECT_THAT(shown(), ElementsAre("", basic("ada:wrong"), basic("ada:right")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, ShiftTabReturnsToTheName) {
  startOnProtected("bob:pw");
  untilSheetHangs();
  screen.type("ada");
  screen.press(XK_Tab);
  screen.type("pw");
  screen.press(XK_Tab, {XK_Shift_L});
  screen.type("bob");
  screen.press(XK_Return);
  untilTold("in /signin");
  EXPECT_THAT(shown(), ElementsAre("", basic("bob:pw")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, CredentialsAreSentAsUtf8) {
  startOnProtected("\u0444\u00fc:\u03bb");
  untilSheetHangs();
  screen.press(XK_Cyrillic_ef);
  screen.press(XK_udiaeresis);
  screen.press(XK_Tab);
  screen.press(XK_Greek_lambda);
  screen.press(XK_Return);
  untilTold("in /signin");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, DecliningShowsTheServersPage) {
  startOnProtected("ada:pw");
  untilSheetHangs();
  screen.press(XK_Escape);
  untilTold("refused /signin");
  untilSheetIsGone();
  clickAt(340, 500);
  untilTold("clicked");
  EXPECT_THAT(shown(), ElementsAre(""));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, TwoPromptsAreShownInTurn) {
  const std::string right = "/right/whose/name/is/so/long/that/the/sheet/needs/a/further/line/for/it";
  protect("/left", "ada:pw");
  protect(right, "bob:pw");
  site.hold("/go-on");
  startOn(
      "<script>const get = async (path) => tell('status ' + (await fetch(path)).status);"
      "get('/left'); fetch('/go-on').then(() => get('" +
      right + "'))</script>");
  const int end = untilSheetEndsBelow(0);
  site.release("/go-on");
  untilShown(2);
  screen.press(XK_Escape);
  untilTold("status 401");
  (void)untilSheetEndsBelow(end);
  enter("bob", "pw");
  untilTold("status 200");
  EXPECT_THAT(shown(), ElementsAre("", "", basic("bob:pw")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// While it goes elsewhere a page neither draws nor fetches; that it has been zoomed is the one thing it can find out.
TEST_F(PasswordTest, ACancelledLoadClosesItsPrompt) {
  protect("/staff", "ada:pw");
  site.serve("/next",
             pageWith("<body style='height: 550px'><script>onclick = () => tell('clicked'); tell('next')</script>"));
  startOn(
      "<script>const width = innerWidth; const look = setInterval(() => {"
      "  if (innerWidth < width) { clearInterval(look); location.href = '/next' } });"
      "onkeydown = () => { location.href = '/staff' }</script>");
  screen.press(XK_g);
  untilShown(1);
  untilSheetHangs();
  screen.press(XK_plus, {XK_Control_L});
  untilTold("next");
  untilSheetIsGone();
  clickAt(340, 400);
  untilTold("clicked");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// Nothing says so of a frame's load: the page that held the frame has gone.
TEST_F(PasswordTest, ANewPageClosesThePromptsOfFrames) {
  protect("/frame", "ada:pw");
  site.serve("/next",
             pageWith("<body style='height: 550px'><script>onclick = () => tell('clicked'); tell('next')</script>"));
  site.serve("/signin", pageWith("<script>const width = innerWidth; const look = setInterval(() => {"
                                 "  if (innerWidth < width) { clearInterval(look); location.href = '/next' } "
                                 "})</script><iframe src='/frame'></iframe>"));
  start();
  screen.focus(window().id);
  untilShown(1);
  untilSheetHangs();
  screen.press(XK_plus, {XK_Control_L});
  untilTold("next");
  untilSheetIsGone();
  clickAt(340, 400);
  untilTold("clicked");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, AnOpenPromptDoesNotBlockClosing) {
  startOnProtected("ada:pw");
  untilSheetHangs();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, AnOpenPromptDoesNotBlockControlW) {
  startOnProtected("ada:pw");
  untilSheetHangs();
  screen.type("ada");
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
  EXPECT_THAT(shown(), ElementsAre(""));
}

TEST_F(PasswordTest, APageShowsFivePromptsPerUserInput) {
  std::string realm;
  site.serve("/image", [&realm](const Request&) {
    realm += " another line of words that the person has to read before there is an end to it";
    return tools::Answer{401, "", {{"WWW-Authenticate", "Basic realm=\"" + realm + "\""}}};
  });
  startOn(
      "<script>onkeydown = async () => { onkeydown = null;"
      "  for (let i = 0; i < 9; ++i) await fetch('/image?' + i); tell('through') }</script>");
  untilPainted();
  screen.press(XK_g);
  for (int question = 0, end = 0; question < 5; ++question) {
    end = untilSheetEndsBelow(end);
    screen.press(XK_Escape);
  }
  untilTold("through");
  untilSheetIsGone();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(PasswordTest, ACrashDuringAPromptEndsTheRun) {
  startOnProtected("ada:pw");
  untilSheetHangs();
  const auto pageProcess = descendantNamed(run->pid(), "WebKitWebProces");
  ASSERT_TRUE(pageProcess);
  kill(*pageProcess, SIGKILL);
  EXPECT_EQ(message(), kLoadFailed);
}

}  // namespace
}  // namespace endtoend
