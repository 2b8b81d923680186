// Ends of a run that nobody planned: signals at odd times, a display that goes away, pages that hold on to the window.

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
  untilAsked("/signin");
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
  untilAsked("/signin");
  session.reset();
  EXPECT_EQ(run->exitStatus(), 1);
  EXPECT_EQ(pipe.text(), kWindowClosed);
  EXPECT_EQ(semaphoreSets(), before);
}

TEST_F(EndingTest, APrintingPageDoesNotBlockClosing) {
  site.serve("/signin", page("<script>onload = () => { print(); fetch('/printed') }</script>"));
  start();
  untilAsked("/printed");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(EndingTest, ABusyPageDoesNotBlockClosing) {
  site.serve("/signin", page("<script>onload = () => fetch('/busy').then(() => { for (;;); })</script>"));
  start();
  untilAsked("/busy");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(EndingTest, ADialogDoesNotBlockClosing) {
  site.serve("/signin", page("<script>fetch('/asking').then(() => alert('terms of use'))</script>"));
  start();
  untilAsked("/asking");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
