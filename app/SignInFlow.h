// Makes every decision of a sign-in. Uses no toolkit.
//
// - A shell (GTK or Cocoa) reports events to `SignInFlow` and carries out what the flow requests from `SignInWindow`.
// - The flow reads the options from `CommandLine` and writes the run's message into the launcher's pipe.
// - A run ends once. After its message the flow ignores every further event.
// - Addresses are compared as they are: not lower-cased, not decoded.
// - Main thread only. Does not throw.

#pragma once

#include <optional>
#include <string>

#include "app/ResultChannel.h"
#include "app/SignInWindow.h"

struct LoadFailure {
  std::optional<std::string> address;  // of the frame's request, if it has one
  int code = 0;                        // as the Cocoa URL loading system numbers errors
  int domain = 0;                      // the number logged for the error domain
  bool provisional = false;            // the load failed before it was committed
};

// The results of page loads.
class LoadOutcomes {
 public:
  virtual ~LoadOutcomes() = default;

  // The main frame has finished loading. `address` is missing if the platform has none.
  virtual void mainFrameFinished(const std::optional<std::string>& address) = 0;

  // A load of any frame has failed.
  virtual void loadFailed(const LoadFailure& failure) = 0;
};

class SignInFlow : public LoadOutcomes {
 public:
  // `window` must outlive the flow.
  explicit SignInFlow(SignInWindow& window) : window_(window) {}

  SignInFlow(const SignInFlow&) = delete;
  SignInFlow& operator=(const SignInFlow&) = delete;

  // Sizes the window, loads the spinner page and sets the title. `bundlePath` is the folder or bundle that contains the
  // program. The sign-in starts when the spinner page has finished.
  void launch(const std::string& bundlePath);

  void mainFrameFinished(const std::optional<std::string>& address) override;

  // Logs the failure. Every code ends the run except -999 (cancelled) and -1005 (connection lost), which also occur
  // when one navigation replaces another.
  void loadFailed(const LoadFailure& failure) override;

  // The user has closed the window. The shell ends the application.
  void lastWindowClosed();

  // The user has clicked a link. Returns true for mailto and tel addresses: they open in another program and the page
  // must not follow them.
  bool linkClicked(const std::string& address);

  // A link with a target, or a script, requests a new window. The address opens in the user's browser.
  void newWindowRequested(const std::string& address);

  bool hasEnded() const { return ended_; }

  // Whether the window has the layout of the enterprise sign-in. Set once.
  bool resizingDone() const { return resizingDone_; }
  void setResizingDone(bool done) { resizingDone_ = done; }

 private:
  void startSignIn();
  void followEnterprisePage(const std::string& address);
  void applyEnterpriseLayout();
  bool report(ResultCode code, std::string address = {});
  void endRun(ResultCode code, std::string address = {});

  SignInWindow& window_;
  bool resizingDone_ = false;
  bool ended_ = false;
};

// Returns the text after the first "redirect_uri" and the one character that follows it, up to the end of the address,
// not decoded. Empty if the key is missing or fewer than two characters follow.
//   "t3:/start?redirect_uri=next:/x&y=1"  => "next:/x&y=1"
//   "t3:/start?redirect_uri=a"            => ""
std::string ExtracyEnterpriseURL(const std::string& url);
