// What each event of the page and of the window means: every decision of a sign-in, without a toolkit.
//
// A shell turns its toolkit's signals into calls of this class and carries out what the flow asks of `SignInWindow`.
// The flow reads the options from `CommandLine`, writes the message of the run into the launcher's pipe and asks the
// window to end the run. A run ends once: after its message nothing more is written or asked, whatever still arrives.
// Addresses are compared as they come, neither lower-cased nor decoded. Main thread only; throws nothing.

#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/ResultChannel.h"
#include "app/SignInWindow.h"

struct LoadFailure {
  std::optional<std::string> address;  // of the frame's request, when it has one
  int code = 0;                        // in the numbering of the Cocoa URL loading system
  int domain = 0;                      // a number that stands for the error domain in the log
  bool provisional = false;            // the load failed before its first byte was committed
};

class SignInFlow {
 public:
  // `window` must outlive the flow.
  explicit SignInFlow(SignInWindow& window) : window_(window) {}

  SignInFlow(const SignInFlow&) = delete;
  SignInFlow& operator=(const SignInFlow&) = delete;

  // Sizes the window, loads the spinner page and sets the title. `bundlePath` is the folder or bundle that the program
  // lies in. The finished spinner page starts the sign-in.
  void launch(const std::string& bundlePath);

  // The main frame has finished loading; `address` is missing when the platform knows none. The second form asks for
  // the address once scrolling is off.
  void mainFrameFinished(const std::optional<std::string>& address);
  void mainFrameFinished(const std::function<std::optional<std::string>()>& address);

  // A load of any frame has failed. A cancelled load (-999) and a lost connection (-1005) are logged and the run goes
  // on, as both happen when one navigation replaces another; every other code in any domain ends the run.
  void loadFailed(const LoadFailure& failure);

  // The user has closed the window; the shell ends the application itself.
  void lastWindowClosed();

  // The user has clicked a link. One that writes a mail or calls a number opens outside and the page stays; true then.
  // Every other link is the page's own affair.
  bool linkClicked(const std::string& address);

  // A link with a target or a script asks for a window of its own: it opens in the user's browser.
  void newWindowRequested(const std::string& address);

  bool hasEnded() const { return ended_; }

  // Whether the window has taken the layout of the enterprise sign-in, which happens once.
  bool resizingDone() const { return resizingDone_; }
  void setResizingDone(bool done) { resizingDone_ = done; }

 private:
  void decide(const std::string& address);
  void startSignIn();
  void followEnterprisePage(const std::string& address);
  void takeEnterpriseLayout();
  bool report(ResultCode code, std::string address = {});
  void endRun(ResultCode code, std::string address = {});

  SignInWindow& window_;
  bool resizingDone_ = false;
  bool ended_ = false;
};

// The text behind the first "redirect_uri" in an enterprise address and the one character that follows it, up to the
// end of the address and undecoded; empty when there is no such key or fewer than two characters of text.
//   "t3:/start?redirect_uri=next:/x&y=1"  => "next:/x&y=1"
//   "t3:/start?redirect_uri=a"            => ""
std::string ExtracyEnterpriseURL(const std::string& url);
