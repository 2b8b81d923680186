// Generated hostile pages, with a hand that clicks and types at random.
//
// SVO_PAGES="FIRST COUNT SECONDS" chooses the seeds and how long the hand plays with each page. Only then must the
// window close within two seconds: the machine has nothing else to do.

#include <signal.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/endtoend/FakeBrowser.h"
#include "tests/endtoend/GeneratedPage.h"
#include "tests/endtoend/Processes.h"
#include "tests/endtoend/PromptTest.h"

namespace endtoend {
namespace {

using std::chrono::milliseconds;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr tools::ScreenSize kScreen{900, 700};
constexpr int kLineHeight = 2;     // of the strip's progress line
constexpr int kPromptOverlap = 4;  // rows of the strip that a prompt covers
constexpr int kShadow = 24;        // around a prompt
constexpr long kMaxMegabytes = 300;
constexpr milliseconds kPace{80};  // of the hand
constexpr milliseconds kMaxClosingTime{2000};

struct Choice {
  unsigned first = 4;  // a page with drags is among the first ten
  unsigned count = 10;
  unsigned seconds = 3;
  bool isStrict = false;
};

Choice choice() {
  Choice choice;
  if (const char* const text = std::getenv("SVO_PAGES")) {
    std::istringstream(text) >> choice.first >> choice.count >> choice.seconds;
    choice.isStrict = true;
  }
  return choice;
}

std::size_t actionsIn(std::chrono::seconds time) {
  return static_cast<std::size_t>(time / kPace);
}

std::vector<std::string> filesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& each : std::filesystem::directory_iterator(folder))
    names.push_back(each.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

bool isEmpty(const Picture& strip, int row) {
  const unsigned background = strip.colorAt(strip.width() - 1, 0);
  for (int x = 0; x < strip.width(); ++x) {
    if (strip.colorAt(x, row) != background) return false;
  }
  return true;
}

class GeneratedPageTest : public PromptTest {
 protected:
  GeneratedPageTest() : PromptTest(kScreen) {
    adoptOrphans();
    before_ = childrenOfThisProcess();
    options.environment.merge(browser_.environment());
  }

  // Lets the hand play with the page, then closes the window and checks what is left of it.
  void check(const std::string& name, const GeneratedPage& generated) {
    name_ = name;
    std::cout << name << ":";
    for (const std::string& each : generated.primitives)
      std::cout << " " << each;
    std::cout << std::endl;

    startQuietly(generated.html);
    for (std::size_t i = 0; i < generated.hand.size() && !run->ended(); ++i) {
      if (i == generated.hand.size() * 2 / 3) site.release("/late");
      perform(generated.hand[i]);
      pauseAndLook();
    }
    if (!run->ended()) checkGrabs();
    if (run->ended()) {
      std::cout << "  ended by the page, " << peak_ << " MB" << std::endl;
    } else {
      closeWindow();
    }
    checkEnd();
  }

 private:
  // Opens ordinary pages first, of another site, of this one, and one of which a part is hidden. Records what the strip
  // shows for them. The page waits for "/go".
  void startQuietly(const std::string& html) {
    serveFiles(site);
    site.serve("/signin", page(html));
    serveBefore("/first", "/short", "");
    serveBefore("/short", "/tall", "");
    serveBefore("/tall", "/signin", "<div style='height: 2000px'></div>");
    site.hold("/go");
    site.hold("/late");
    options.signIn = "http://localhost" + site.address("/first").substr(site.address().rfind(':'));
    files_ = filesIn(std::filesystem::temp_directory_path());
    screen.moveTo(0, 0);
    screenBefore_ = screen.picture(wholeScreen());
    start();
    window_ = window();
    screen.focus(window_.id);
    for (const char* const held : {"/first", "/short", "/tall"}) {
      untilRequested(std::string("/after") + held);
      recordStrip();
      site.release(std::string("/after") + held);
    }
    untilRequested("/go");
    site.release("/go");
  }

  // An ordinary page that goes to another one when the site lets it.
  void serveBefore(const std::string& path, const std::string& next, const std::string& body) {
    site.hold("/after" + path);
    site.serve(path, page(body + "<script>onload = () => fetch('/after" + path + "').then(() => { location.href = '" +
                          site.address(next) + "' })</script>"));
  }

  void recordStrip() {
    until("the site", [this] {
      Picture strip = screen.picture({window_.frame.x, window_.frame.y, window_.frame.width, kStripHeight});
      const bool isReady =
          isEmpty(strip, kStripHeight - 1) && !isEmpty(strip, kStripHeight / 2) &&
          std::all_of(strips_.begin(), strips_.end(), [&](const Picture& each) { return differs(strip, each); });
      if (isReady) strips_.push_back(std::move(strip));
      return isReady;
    });
  }

  static bool differs(const Picture& strip, const Picture& other) {
    for (int y = 0; y < strip.height(); ++y) {
      for (int x = 0; x < strip.width(); ++x) {
        if (strip.colorAt(x, y) != other.colorAt(x, y)) return true;
      }
    }
    return false;
  }

  static Area wholeScreen() { return {0, 0, kScreen.width, kScreen.height}; }

  void perform(const HandAction& action) {
    using Kind = HandAction::Kind;
    static constexpr std::array<KeySymbol, 10> kKeys = {XK_Return, XK_space, XK_Tab,       XK_Escape, XK_Down,
                                                        XK_Up,     XK_End,   XK_BackSpace, XK_F11,    XK_g};
    static constexpr std::array<KeySymbol, 5> kControlKeys = {XK_a, XK_c, XK_v, XK_plus, XK_minus};
    const int left = window_.frame.x;
    const int top = window_.frame.y + kStripHeight;
    switch (action.kind) {
      case Kind::kMove:
        return screen.moveTo(left + action.x, top + action.y);
      case Kind::kClick:
        return screen.click(left + action.x, top + action.y);
      case Kind::kDoubleClick:
        return screen.doubleClick(left + action.x, top + action.y);
      case Kind::kRightClick:
        clickedRight_ = true;
        return screen.clickRight(left + action.x, top + action.y);
      case Kind::kDrag:
        screen.drag(left + action.x, top + action.y, left + action.toX, top + action.toY);
        pauseAndLook();
        return screen.releaseButton();
      case Kind::kWheel:
        return screen.turnWheel(3);
      case Kind::kKey:
        return screen.press(kKeys[action.choice % kKeys.size()]);
      case Kind::kEditingKey:
        return screen.press(kControlKeys[action.choice % kControlKeys.size()], {XK_Control_L});
      case Kind::kText:
        return screen.type("some text");
      case Kind::kEndPage:
        return end("WebKitWebProces");
      case Kind::kEndNetwork:
        return end("WebKitNetworkPr");
    }
  }

  void pauseAndLook() {
    (void)tools::waitUntil([this] { return run->ended(); }, kPace);
    look();
  }

  void end(const char* process) {
    if (const auto found = descendantNamed(run->pid(), process)) kill(*found, SIGKILL);
  }

  // Reports each kind of finding once.
  void find(const std::string& finding) { find(finding, screen.picture(wholeScreen())); }
  void find(const std::string& finding, const Picture& shown) {
    if (!findings_.insert(finding).second) return;
    ADD_FAILURE() << finding;
    if (const char* const folder = std::getenv("SVO_PICTURES"))
      shown.savePng(std::string(folder) + "/" + name_ + ", " + finding + ".png");
  }

  void look() {
    if (const auto peak = peakMegabytesOf(run->pid())) peak_ = std::max(peak_, *peak);
    const bool hadMenu = showsMenu();
    const Picture all = screen.picture(wholeScreen());
    const Picture own = picture();
    if (hadMenu || showsMenu() || !isShown(window_.id)) return;
    checkSurroundings(all);
    const bool known =
        std::any_of(strips_.begin(), strips_.end(), [&](const Picture& strip) { return isStrip(own, strip); });
    if (!known) find("the strip shows what it has not drawn", own);
  }

  // The user opens a menu with a right click. Reports every other window that has not been closed meanwhile.
  bool showsMenu() {
    bool result = false;
    for (const ScreenWindow& each : screen.windows()) {
      if (each.id == window_.id) continue;
      const std::vector<std::string> types = screen.namesOf(each.id, "_NET_WM_WINDOW_TYPE");
      const bool isMenu = clickedRight_ && types == std::vector<std::string>{"_NET_WM_WINDOW_TYPE_POPUP_MENU"};
      if (!isMenu && isShown(each.id))
        find("a second window is shown: " + (types.empty() ? each.title : types.front()));
      result = result || isMenu;
    }
    return result;
  }

  bool isShown(tools::WindowId id) {
    const std::vector<ScreenWindow> all = screen.windows();
    return std::any_of(all.begin(), all.end(), [id](const ScreenWindow& each) { return each.id == id; });
  }

  Picture picture() { return screen.picture(window_.frame); }

  void checkSurroundings(const Picture& all) {
    const Area& frame = window_.frame;
    for (int y = 0; y < all.height(); ++y) {
      for (int x = 0; x < all.width(); ++x) {
        const bool isInside = x >= frame.x && x < frame.x + frame.width && y >= frame.y && y < frame.y + frame.height;
        if (!isInside && all.colorAt(x, y) != screenBefore_->colorAt(x, y))
          return find("something is drawn outside the window", all);
      }
    }
  }

  // A prompt covers the last rows of the strip and darkens those above, and the progress line has one color.
  static bool isStrip(const Picture& own, const Picture& strip) {
    const Frame prompt = showsPrompt(own) ? promptIn(own) : Frame{own.width() + kShadow, 0, 0};
    std::optional<unsigned> line;
    for (int y = 0; y < kStripHeight; ++y) {
      for (int x = 0; x < own.width(); ++x) {
        const unsigned color = own.colorAt(x, y);
        if (color == strip.colorAt(x, y)) continue;
        const bool atPrompt = x >= prompt.left - kShadow && x <= prompt.right + kShadow;
        if (atPrompt && (y >= kStripHeight - kPromptOverlap || isInShadow(color, strip.colorAt(x, y)))) continue;
        if (y < kStripHeight - kLineHeight || line.value_or(color) != color) return false;
        line = color;
      }
    }
    return true;
  }

  // The shadow of a prompt takes at most four tenths of the light.
  static bool isInShadow(unsigned color, unsigned light) {
    for (const unsigned shift : {16U, 8U, 0U}) {
      const unsigned dark = color >> shift & 0xff, bright = light >> shift & 0xff;
      if (dark > bright || 10 * dark + 10 < 6 * bright) return false;
    }
    return true;
  }

  // No event reports the end of another program's grab.
  void checkGrabs() {
    const auto deadline = std::chrono::steady_clock::now() + kTimeout;
    while (!run->ended() && !screen.canGrabInput() && !(clickedRight_ && showsMenu())) {
      if (std::chrono::steady_clock::now() > deadline) return find("the pointer or the keyboard stays grabbed");
      (void)tools::waitUntil([this] { return run->ended(); }, kPace);
    }
  }

  void closeWindow() {
    const auto begin = std::chrono::steady_clock::now();
    screen.press(XK_w, {XK_Control_L});
    const bool closed = tools::waitUntil([this] { return run->ended(); }, kTimeout);
    const auto time = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
    std::cout << "  closed after " << time.count() << " ms, " << peak_ << " MB" << std::endl;
    if (choice().isStrict && time > kMaxClosingTime) find("the window closed after more than two seconds");
    if (closed) return;
    find("the window does not close");
    run->signal(SIGKILL);
    (void)run->exitStatus();
    removeSemaphoreSets();
  }

  void checkEnd() {
    EXPECT_THAT(message(), AnyOf(kWindowClosed, kLoadFailed, result(site.address("/done?code=1"))));
    EXPECT_LE(peak_, kMaxMegabytes);
    for (const pid_t child : childrenOfThisProcess()) {
      const bool isOurs = std::find(before_.begin(), before_.end(), child) != before_.end();
      EXPECT_TRUE(isOurs || waitForExit(child)) << "process " << child << " outlives the window";
    }
    EXPECT_THAT(filesInHome(), ElementsAre("Library", "Library/Logs", "Library/Logs/Kelvo.log"));
    EXPECT_THAT(sandboxFiles(), IsEmpty());
    EXPECT_EQ(filesIn(std::filesystem::temp_directory_path()), files_);
    EXPECT_THAT(semaphoreSets(), IsEmpty());
  }

  std::string name_;
  FakeBrowser browser_{temporary("browser")};
  std::vector<pid_t> before_;
  std::vector<std::string> files_;
  ScreenWindow window_;
  std::optional<Picture> screenBefore_;
  std::vector<Picture> strips_;
  bool clickedRight_ = false;
  long peak_ = 0;  // megabytes
  std::set<std::string> findings_;
};

class SeedTest : public GeneratedPageTest, public testing::WithParamInterface<unsigned> {};

TEST_P(SeedTest, ThePageChangesNothingButItself) {
  const std::string seed = std::to_string(GetParam());
  SCOPED_TRACE("to repeat it: ./dev fuzz pages --seed " + seed + " --count 1");
  check("seed " + seed, generatedPage(GetParam(), actionsIn(std::chrono::seconds(choice().seconds))));
}

INSTANTIATE_TEST_SUITE_P(Seeds, SeedTest, testing::Range(choice().first, choice().first + choice().count),
                         testing::PrintToStringParamName());

class ExhaustionTest : public GeneratedPageTest, public testing::WithParamInterface<Primitive> {};

TEST_P(ExhaustionTest, DoesNotKeepTheWindowOpen) {
  check(GetParam().name, pageOf(GetParam(), actionsIn(std::chrono::seconds(1))));
}

std::vector<Primitive> exhausting() {
  std::vector<Primitive> result;
  std::copy_if(primitives().begin(), primitives().end(), std::back_inserter(result),
               [](const Primitive& each) { return each.exhausts; });
  return result;
}

INSTANTIATE_TEST_SUITE_P(By, ExhaustionTest, testing::ValuesIn(exhausting()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace endtoend
