// Pages that are busy, send request storms, are huge or crash: the run ends with one message, and the window can always
// be closed.

#include <glib.h>
#include <signal.h>
#include <time.h>

#include <algorithm>
#include <optional>
#include <string>

#include "tests/endtoend/Processes.h"
#include "tests/endtoend/PromptTest.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::SizeIs;

class HostilePageTest : public PromptTest {
 protected:
  // The peak memory of the window's own process, in megabytes.
  long megabytes() const {
    const std::optional<long> figure = peakMegabytesOf(run->pid());
    if (!figure) throw std::runtime_error("no figure of the process's memory");
    return *figure;
  }

  void killPageProcess(int signal) {
    const auto pageProcess = descendantNamed(run->pid(), "WebKitWebProces");
    ASSERT_TRUE(pageProcess);
    kill(*pageProcess, signal);
  }
};

TEST_F(HostilePageTest, ABusyPageIsClosedByTheButton) {
  startOn("<script>onload = () => report('hanging').then(() => { for (;;); })</script>");
  untilReported("hanging");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(HostilePageTest, ABusyPageIsClosedByControlW) {
  startOn("<script>onload = () => report('hanging').then(() => { for (;;); })</script>");
  untilReported("hanging");
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(HostilePageTest, APageBusyInUnloadIsClosed) {
  startOn(
      "<body style='height: 550px'><script>onbeforeunload = () => { for (;;); }; onclick = () => report('clicked')"
      "</script>");
  click();
  untilReported("clicked");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(HostilePageTest, ABeforeUnloadDialogIsConfirmed) {
  startOn(
      "<body style='height: 550px'><script>onclick = () => { location.href = '/done?code=1' };"
      "onbeforeunload = (event) => { event.preventDefault(); return event.returnValue = 'Stay!' }</script>");
  click();
  EXPECT_EQ(message(), result(site.address("/done?code=1")));
}

class EndlessAlertsTest : public HostilePageTest, public testing::WithParamInterface<Named> {
 protected:
  void startAndAnswerFive() {
    startOn(std::string("<script>let shown = 0; const show = () => { alert('Call us!'); ++shown };"
                        "onload = async () => { await report('asking'); ") +
            GetParam().script + " }</script>");
    untilReported("asking");
    for (int i = 0; i < 5; ++i)
      replyWith(XK_Return);
  }
};

TEST_P(EndlessAlertsTest, DoNotBlockTheCloseButton) {
  startAndAnswerFive();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_P(EndlessAlertsTest, DoNotBlockControlW) {
  startAndAnswerFive();
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Shown, EndlessAlertsTest,
                         testing::Values(Named{"InALoop", "for (;;) show()"},
                                         Named{"AtIntervals", "setInterval(show)"}),
                         nameOf);

class StormTest : public HostilePageTest, public testing::WithParamInterface<Named> {};

// The window is closed after a hundred steps of the storm, which continues.
TEST_P(StormTest, DoesNotAffectMemoryLogOrCloseButton) {
  site.serve("/file", {200, "x", {{"Content-Disposition", "attachment; filename=x"}}});
  startOn(std::string("<body><script>let n = 0; const step = () => { ") + GetParam().script +
          " };"
          "onkeydown = () => { setInterval(() => { step(); if (++n === 100) report('raging') }) }</script>");
  const long before = megabytes();
  screen.press(XK_g);
  untilReported("raging");
  EXPECT_LE(megabytes() - before, 100);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(logLines(), SizeIs(testing::Le(5)));
}

INSTANTIATE_TEST_SUITE_P(
    Of, StormTest,
    testing::Values(
        Named{"States", "try { history.pushState({}, '', '/signin?' + n) } catch {}"},
        Named{"Fragments", "location.hash = n"}, Named{"Titles", "document.title = 'x'.repeat(100000) + n"},
        Named{"Text", "document.write('<p>' + 'x'.repeat(1000))"}, Named{"Images", "(new Image).src = '/image?' + n"},
        Named{"Frames", "for (let i = 0; i < 20; ++i) document.body.append(document.createElement('iframe'))"},
        Named{"Downloads",
              "const a = document.createElement('a'); a.href = '/file?' + n; a.download = 'x';"
              "document.body.append(a); a.click()"},
        Named{"Permissions", "navigator.geolocation.getCurrentPosition(() => 0); Notification.requestPermission()"},
        Named{"Memory", "if (n < 150) (window.all = window.all ?? []).push(new Uint8Array(2e6).fill(1))"},
        Named{"Workers", "if (n < 8) new Worker(URL.createObjectURL(new Blob(['for (;;);'])))"}),
    nameOf);

class LongTextsTest : public HostilePageTest, public testing::WithParamInterface<Named> {
 protected:
  LongTextsTest()
      : wakeUps_(g_timeout_add(
            5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr)) {}
  ~LongTextsTest() override { g_source_remove(wakeUps_); }

  // Of the window's own process. Unlike the time that passes, it does not depend on other processes.
  double processorSeconds() const {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(run->pid(), &clock) != 0 || clock_gettime(clock, &time) != 0) return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  }

 private:
  guint wakeUps_;  // `until` checks its condition often, so that the last peak of a stopped page is seen
};

// A page that is stopped ends the run.
TEST_P(LongTextsTest, DoNotFillTheWindowsMemory) {
  startOn(std::string("<body><script>let n = 0; const long = 'x'.repeat(2e6); const step = () => { ") +
          GetParam().script +
          " };"
          "onkeydown = () => { setInterval(() => { step(); if (++n % 50 === 0) report('step ' + n) }) }</script>");
  const long before = megabytes();
  long peak = before;
  screen.press(XK_g);
  until("the storm", [&] {
    peak = std::max(peak, peakMegabytesOf(run->pid()).value_or(0));
    return run->ended() || reports().size() > 4;
  });
  EXPECT_LE(peak - before, 200);  // together with the 50 MB of an idle window less than 300 MB

  const double atClosing = processorSeconds();
  double atEnd = atClosing;
  if (screen.windowOf(run->pid())) screen.press(XK_w, {XK_Control_L});
  until("the end", [&] {
    atEnd = std::max(atEnd, processorSeconds());
    return run->ended();
  });
  EXPECT_LE(atEnd - atClosing, 2);
  EXPECT_THAT(message(), testing::AnyOf(kWindowClosed, kLoadFailed));
}

INSTANTIATE_TEST_SUITE_P(
    Of, LongTextsTest,
    testing::Values(Named{"Fragments", "location.hash = n + long"},
                    Named{"ReplacedFragments", "location.replace('#' + n + long)"},
                    Named{"ShorterFragments", "location.replace('#' + n + long.slice(0, 60000))"},
                    Named{"States", "try { history.pushState({}, '', '/signin?' + n + long) } catch {}"},
                    Named{"Images", "(new Image).src = '/image?' + n + long"},
                    Named{"Frames",
                          "const frame = document.createElement('iframe'); frame.src = '/file?' + n + long;"
                          "document.body.append(frame)"},
                    Named{"FramesWithData",
                          "const frame = document.createElement('iframe'); frame.src = 'data:text/html,' + n + long;"
                          "document.body.append(frame)"},
                    Named{"ManyFramesWithData",
                          "for (let i = 0; i < 20; ++i) { const frame = document.createElement('iframe');"
                          "frame.src = 'data:text/html,' + n + i + long; document.body.append(frame) }"},
                    Named{"NamesOfFrames",
                          "for (let i = 0; i < 5; ++i) { const frame = document.createElement('iframe');"
                          "frame.name = n + i + long; frame.src = '/file'; document.body.append(frame) }"},
                    Named{"ManyShorterFragments",
                          "for (let i = 0; i < 200; ++i) location.replace('#' + n + i + long.slice(0, 250000))"},
                    Named{"ObjectsOfStates",
                          "try { for (let i = 0; i < 20; ++i) history.pushState(n + i + long, '', '?' + n) } catch {}"},
                    Named{"Downloads",
                          "const a = document.createElement('a'); a.href = 'data:x/y,' + n + long; a.download = 'x';"
                          "document.body.append(a); a.click()"},
                    Named{"Titles", "document.title = n + long"}),
    nameOf);

class PageMemoryTest : public HostilePageTest, public testing::WithParamInterface<Named> {};

// 3 GB at most, so that a machine survives a window without the limit.
TEST_P(PageMemoryTest, APageThatNeedsTooMuchIsStopped) {
  startOn(std::string("<script>const all = []; let n = 0; const step = () => "
                      "{ if (++n < 1500) all.push(new Uint8Array(2e6).fill(1)) };"
                      "onkeydown = () => { ") +
          GetParam().script + " }</script>");
  screen.press(XK_g);
  EXPECT_EQ(message(), kLoadFailed);
  EXPECT_THAT(logLines(), Contains(HasSubstr("needed too much memory")));
}

INSTANTIATE_TEST_SUITE_P(
    Of, PageMemoryTest,
    testing::Values(Named{"InOneScript", "for (;;) step()"}, Named{"InManySteps", "setInterval(step)"},
                    Named{"InWorkers",
                          "for (let i = 0; i < 3; ++i) new Worker(URL.createObjectURL(new Blob(["
                          "'const all = []; for (let n = 0; n < 500; ++n) all.push(new Uint8Array(2e6).fill(1));"
                          "for (;;);'])))"},
                    Named{"InBlobs",
                          "setInterval(() => { if (++n < 150) all.push(new Blob([new Uint8Array(2e7).fill(n)])) })"}),
    nameOf);

class EndlessNavigationTest : public HostilePageTest, public testing::WithParamInterface<Named> {};

TEST_P(EndlessNavigationTest, DoesNotAffectLogOrCloseButton) {
  site.serve("/signin", page(std::string("<script>") + GetParam().script + "</script>"));
  start();
  until("fifty pages", [this] { return site.requests().size() > 50; });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(logLines(), SizeIs(testing::Le(6)));
}

INSTANTIATE_TEST_SUITE_P(Of, EndlessNavigationTest,
                         testing::Values(Named{"Pages",
                                               "onload = () => { location.href = '/signin?' + Math.random() }"},
                                         Named{"Reloads", "onload = () => location.reload()"}),
                         nameOf);

// Each navigation cancels the one before, which is logged.
TEST_F(HostilePageTest, EndlessRedirectsDoNotBlockTheCloseButton) {
  site.serve("/signin", page("<script>location.replace('/signin?' + Math.random())</script>"));
  start();
  until("fifty pages", [this] { return site.requests().size() > 50; });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(HostilePageTest, AHugePageDoesNotUseWindowMemory) {
  startOn("<script>onkeydown = () => { location.href = '/large' }</script>");
  site.serve("/large",
             pageWith("<!--" + std::string(100'000'000, 'x') + "--><script>onload = () => report('large')</script>"));
  const long before = megabytes();
  screen.press(XK_g);
  untilReported("large");
  EXPECT_LE(megabytes() - before, 100);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(HostilePageTest, AHugeAddressDoesNotBlockClosing) {
  startOn(
      "<script>onkeydown = () => { location.hash = 'x'.repeat(1000000); frames(5).then(() => report('there')) "
      "}</script>");
  screen.press(XK_g);
  untilReported("there");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class EnginePageTest : public HostilePageTest, public testing::WithParamInterface<Named> {};

TEST_P(EnginePageTest, IsNotOpenedByASite) {
  startOn(std::string("<script>onkeydown = () => { location.href = '") + GetParam().script +
          "'; frames(20).then(() => report('still here')) }</script>");
  screen.press(XK_g);
  untilReported("still here");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Of, EnginePageTest,
                         testing::Values(Named{"TheInspector",
                                               "resource:///org/webkit/inspector/UserInterface/Main.html"},
                                         Named{"TheInspectorsScheme", "inspector-resource:///Main.html"},
                                         Named{"TheGraphicsReport", "webkit://gpu"}),
                         nameOf);

class BlobOrDataPageTest : public HostilePageTest, public testing::WithParamInterface<Named> {};

TEST_P(BlobOrDataPageTest, EndsTheRun) {
  startOn(std::string("<script>onkeydown = () => { location.href = ") + GetParam().script + " }</script>");
  screen.press(XK_g);
  EXPECT_EQ(message(), kLoadFailed);
}

INSTANTIATE_TEST_SUITE_P(AtTopLevel, BlobOrDataPageTest,
                         testing::Values(Named{"Blob", "URL.createObjectURL(new Blob(['x'], {type: 'text/html'}))"},
                                         Named{"Data", "'data:text/html,x'"}),
                         nameOf);

TEST_F(HostilePageTest, ADownloadInAFrameEndsTheRun) {
  site.serve("/file", {200, "x", {{"Content-Disposition", "attachment; filename=x"}}});
  site.serve("/signin", pageWith("<iframe src='/file'></iframe>"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
}

TEST_F(HostilePageTest, ACrashBehindTheSpinnerEndsTheRun) {
  site.hold("/signin");
  start();
  untilRequested("/signin");
  killPageProcess(SIGKILL);
  EXPECT_EQ(message(), kLoadFailed);
}

TEST_F(HostilePageTest, ACrashEndsTheRun) {
  startOn("");
  killPageProcess(SIGABRT);
  EXPECT_EQ(message(), kLoadFailed);
}

TEST_F(HostilePageTest, ACrashDuringADialogEndsTheRun) {
  startOn("<script>onload = () => report('asking').then(() => alert('Call us!'))</script>");
  untilReported("asking");
  untilPromptIsShown();
  killPageProcess(SIGKILL);
  EXPECT_EQ(message(), kLoadFailed);
}

}  // namespace
}  // namespace endtoend
