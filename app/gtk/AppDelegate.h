// The application on GTK: builds the window, turns the toolkit's signals into calls of the flow, and runs until the
// flow ends the run. It only translates; every decision is `SignInFlow`'s.
//
// No page that came over the network may go to a file of this machine.
//
// SIGTERM, SIGINT and SIGHUP count as closing the window: the launcher still gets its message and nothing stays behind.

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/SignInFlow.h"
#include "app/gtk/LoadClock.h"
#include "app/gtk/LoadTracker.h"
#include "app/gtk/NetworkProcessWatch.h"
#include "app/gtk/PageDialogs.h"
#include "app/gtk/SVOWindow.h"

class AppDelegate : private LoadOutcomes {
 public:
  // Needs an initialised GTK. `sandboxed` as in SVOWindow.
  explicit AppDelegate(bool sandboxed);
  ~AppDelegate() override;

  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  // Shows the spinner page and handles events until the end of the run.
  void run(const std::string& bundlePath);

  // Ends the run as when the user closes the window.
  void closeWindow();

 private:
  void mainFrameFinished(const std::optional<std::string>& address) override;
  void loadFailed(const LoadFailure& failure) override { flow_.loadFailed(failure); }

  static gboolean onDelete(GtkWidget*, GdkEvent*, AppDelegate* self);
  static gboolean onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                 AppDelegate* self);
  static GtkWidget* onCreate(WebKitWebView*, WebKitNavigationAction* action, AppDelegate* self);

  bool mayGo(const std::string& address) const;

  std::unique_ptr<SVOWindow> window_;
  SignInFlow flow_;
  LoadClock clock_;
  LoadTracker tracker_;
  NetworkProcessWatch networkProcess_;
  PageDialogs pageDialogs_;
};
