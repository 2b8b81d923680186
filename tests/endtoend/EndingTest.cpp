// Unplanned ends of a run: early signals, a lost display, pages that try to block closing.

#include <signal.h>

#include <memory>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Processes.h"

namespace endtoend {
namespace {

class EndingTest : public EndToEndTest {};

TEST_F(EndingTest, AStartUpSignalReportsAClosedWindow) {
  start();
  untilLogSays("Build Version - 9.0.0.121");
  run->signal(SIGTERM);
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(EndingTest, ASecondSignalChangesNothing) {
  start();
  untilRequested("/signin");
  run->signal(SIGTERM);
  run->signal(SIGINT);
  run->signal(SIGHUP);
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(EndingTest, ALostDisplayReportsAClosedWindow) {
  const std::vector<int> before = semaphoreSets();
  auto session = std::make_unique<tools::VirtualDisplay>();
  options.environment["DISPLAY"] = session->name();
  start();
  untilRequested("/signin");
  session.reset();
  EXPECT_EQ(run->exitStatus(), 1);
  EXPECT_EQ(pipe.text(), kWindowClosed);
  EXPECT_EQ(semaphoreSets(), before);
}

TEST_F(EndingTest, APrintingPageDoesNotBlockClosing) {
  site.serve("/signin", page("<script>onload = () => { print(); fetch('/printed') }</script>"));
  start();
  untilRequested("/printed");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(EndingTest, ABusyPageDoesNotBlockClosing) {
  site.serve("/signin", page("<script>onload = () => fetch('/busy').then(() => { for (;;); })</script>"));
  start();
  untilRequested("/busy");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(EndingTest, ADialogDoesNotBlockClosing) {
  site.serve("/signin", page("<script>fetch('/asking').then(() => alert('terms of use'))</script>"));
  start();
  untilRequested("/asking");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
