// The sign-in window's entry point on Linux.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/AbnormalEnd.h"
#include "app/CommandLine.h"
#include "app/ResultChannel.h"
#include "app/gtk/Application.h"
#include "app/gtk/DisplayWatch.h"
#include "app/gtk/Environment.h"
#include "app/gtk/Language.h"
#include "app/gtk/PrivateFolder.h"
#include "app/gtk/Sandbox.h"
#include "app/gtk/StartUp.h"
#include "app/gtk/Tickets.h"
#include "applog/Logger.h"
#include "platform/Machine.h"

namespace {

constexpr char kProgramName[] = "svo-signin";

// The launcher gets the same message as for missing options.
int reportMissingDisplay() {
  std::string none;
  if (claimMessage()) {
    (void)WriteFIFO(CommandLine::GetInstance()->pipe_name, ConstructOutputString(kOptionsMissing, none));
  }
  std::fprintf(stderr, "%s: cannot open a display; set DISPLAY or WAYLAND_DISPLAY\n", kProgramName);
  return 1;
}

// Without a working sandbox the sign-in continues with a warning.
bool canSandbox(SandboxTrial& trial) {
  if (trial.failure().empty()) {
    return true;
  }
  const std::string warning = "bwrap does not work here (" + trial.failure() + "); pages run without a sandbox";
  Logger::getInstance()->logWarn("SVO", "%s", warning.c_str());
  std::fprintf(stderr, "%s: %s\n", kProgramName, warning.c_str());
  return false;
}

void removeFiles() {
  removeSandboxFiles();
  removePrivateFolder();
}

// Gives the web session what it needs to sign in by Kerberos, if the user has a ticket for one of the servers.
void prepareTickets(const CommandLine& options) {
  removeAbandonedFolders();
  const std::vector<std::string> servers =
      serversForTickets({options.zel_url, options.redirect_url, options.redirect_type3_url});
  if (servers.empty()) return;
  if (createPrivateFolder().empty()) {
    Logger::getInstance()->logWarn("SVO",
                                   "Kerberos is not used: neither XDG_RUNTIME_DIR nor the temporary folder is safe");
    return;
  }
  permitTickets(servers);
  for (const std::string& each : servers)
    Logger::getInstance()->logInfo("SVO", "Kerberos may be used at %s", each.c_str());
}

// The icon is compiled in, so that it is shown even if the package is not installed.
void setIcon() {
  gtk_icon_theme_add_resource_path(gtk_icon_theme_get_default(), "/svo-signin/icons");
  gtk_window_set_default_icon_name(kProgramName);
}

}  // namespace

int main(int argc, char** argv) {
  prepareEnvironment();
  prepareDescriptors();
  forbidCoreFiles();

  // Before the log: a process that a signal ends leaves its user count in the log's locks.
  static TerminationSignals signals;

  Logger::getInstance()->setLogLevel(Log_Level_Info, "SVO", nullptr);
  CommandLine::GetInstance()->InitCommandLine(static_cast<unsigned long>(argc), const_cast<const char**>(argv));

  reportAbnormalEnd(CommandLine::GetInstance()->pipe_name, removeFiles);

  prepareLocale();
  selectCatalogues(platform::bundlePath());
  SandboxTrial sandbox;
  (void)std::atexit(removeFiles);
  prepareTickets(*CommandLine::GetInstance());

  // GTK would parse the program's arguments, so it gets none.
  g_set_prgname(kProgramName);
  if (!gtk_init_check(nullptr, nullptr)) return reportMissingDisplay();
  selectDirection();
  setIcon();

  // A signal or the end of the session closes the window: the launcher gets its message.
  Application application(canSandbox(sandbox));
  signals.deliverTo([&application] { application.closeWindow(); });
  const DisplayWatch watch([&application] { application.closeWindow(); });
  application.run(platform::bundlePath());
  return 0;
}
