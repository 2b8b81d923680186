// The sign-in window's entry point on Linux.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/CommandLine.h"
#include "app/ResultChannel.h"
#include "app/gtk/AppDelegate.h"
#include "app/gtk/DisplayWatch.h"
#include "app/gtk/Environment.h"
#include "app/gtk/Sandbox.h"
#include "app/gtk/TerminationSignals.h"
#include "applog/Logger.h"
#include "platform/Machine.h"

namespace {

constexpr char kProgramName[] = "svo-signin";

// No window will ever be seen: the launcher is told what it is told when the options are missing.
int reportMissingDisplay() {
  std::string none;
  (void)WriteFIFO(CommandLine::GetInstance()->pipe_name, ConstructOutputString(kOptionsMissing, none));
  std::fprintf(stderr, "%s: cannot open a display; set DISPLAY or WAYLAND_DISPLAY\n", kProgramName);
  return 1;
}

// The sign-in goes on without: a machine that cannot do better is no reason to keep a person out.
bool canSandbox(SandboxTrial& trial) {
  if (trial.obstacle().empty()) {
    (void)std::atexit(removeSandboxNotes);
    return true;
  }
  const std::string warning = "bwrap does not work here (" + trial.obstacle() + "); pages run without a sandbox";
  Logger::getInstance()->logWarn("SVO", "%s", warning.c_str());
  std::fprintf(stderr, "%s: %s\n", kProgramName, warning.c_str());
  return false;
}

// The icon is part of the program, so that it shows whether the package is installed or not.
void settleIcon() {
  gtk_icon_theme_add_resource_path(gtk_icon_theme_get_default(), "/svo-signin/icons");
  gtk_window_set_default_icon_name(kProgramName);
}

}  // namespace

int main(int argc, char** argv) {
  settleStandardStreams();

  // Before the log: a process that a signal ends in the middle leaves its place in the log's locks behind.
  static TerminationSignals signals;

  Logger::getInstance()->setLogLevel(Log_Level_Info, "SVO", nullptr);
  CommandLine::GetInstance()->InitCommandLine(static_cast<unsigned long>(argc), const_cast<const char**>(argv));

  settleLibraries();
  SandboxTrial sandbox;

  // GTK would take options of its own from the command line, so it gets none.
  g_set_prgname(kProgramName);
  if (!gtk_init_check(nullptr, nullptr)) return reportMissingDisplay();
  settleIcon();

  // A signal and the end of the session count as closing the window: the launcher still gets its message.
  AppDelegate delegate(canSandbox(sandbox));
  signals.deliverTo([&delegate] { delegate.closeWindow(); });
  const DisplayWatch watch([&delegate] { delegate.closeWindow(); });
  delegate.run(platform::bundlePath());
  return 0;
}
