// Records the load events of one address, as the sign-in window gets them. TraceTest replays such traces.
//
//   record-trace ADDRESS [SECONDS]
//
// Signs in at the address in a window on $DISPLAY, without a sandbox, and prints one event per line. Ends after SECONDS
// without an event (default 2). The spinner page's own events are left out.

#include <glib.h>
#include <gtk/gtk.h>

#include <cstdio>
#include <cstdlib>
#include <optional>

#include "app/CommandLine.h"
#include "app/SignInFlow.h"
#include "app/SpinnerPage.h"
#include "app/gtk/GtkSignInWindow.h"
#include "tests/app/gtk/Trace.h"

namespace {

class Recorder {
 public:
  explicit Recorder(unsigned quietSeconds) : quietSeconds_(quietSeconds) { restartTimer(); }

  bool isQuiet() const { return quiet_; }

  void record(const LoadEvent& event) {
    restartTimer();
    if (recording_ && !quiet_) {
      std::puts(lineOf(event).c_str());
      std::fflush(stdout);
    }
    if (event.kind == LoadEvent::Kind::kFinished && event.address == spinnerHTMLBaseURL) recording_ = true;
  }

 private:
  void restartTimer() {
    if (timer_ != 0) g_source_remove(timer_);
    timer_ = g_timeout_add_seconds(quietSeconds_, onQuiet, this);
  }

  static gboolean onQuiet(gpointer self) {
    auto* const recorder = static_cast<Recorder*>(self);
    recorder->timer_ = 0;
    recorder->quiet_ = true;
    gtk_main_quit();
    return G_SOURCE_REMOVE;
  }

  unsigned quietSeconds_;
  guint timer_ = 0;
  bool recording_ = false;
  bool quiet_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !gtk_init_check(nullptr, nullptr)) {
    std::fputs("usage: record-trace ADDRESS [SECONDS], with a display\n", stderr);
    return 1;
  }

  // No page has these addresses, so that only a failure ends the run.
  CommandLine& options = *CommandLine::GetInstance();
  options.zel_url = argv[1];
  options.redirect_url = options.redirect_type3_url = "no-page:";

  Recorder recorder(argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 2);
  std::optional<SignInFlow> flow;  // outlives the window
  GtkSignInWindow window;
  window.open(flow.emplace(window), false);
  window.page().observeLoads([&recorder](const LoadEvent& event) { recorder.record(event); });
  flow->launch("/");
  while (!recorder.isQuiet())
    gtk_main();              // the end of the run also quits it
  flow->lastWindowClosed();  // ends the run, so that destroying the window is not a failed load
  return 0;
}
