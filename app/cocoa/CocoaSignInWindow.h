// The sign-in window on Cocoa. Applies the requests of the flow to the window and the web view of the delegate.

#pragma once

#import <Cocoa/Cocoa.h>

#include <optional>
#include <string>

#include "app/SignInWindow.h"

@class AppDelegate;

class CocoaSignInWindow : public SignInWindow {
 public:
  // Each call uses the current window and web view of `delegate`, which must outlive this object.
  explicit CocoaSignInWindow(AppDelegate* delegate) : delegate_(delegate) {}

  // Returns the text of an address that the web view reports; `spinnerHTMLBaseURL` for the spinner page. No value if
  // `url` is nil or has no UTF-8 form.
  std::optional<std::string> addressOf(NSURL* url) const;

  // Sets the URL that `openInBrowser` opens. The text of the address is not enough: it may contain characters that
  // `URLWithString:` rejects.
  void setRequestedURL(NSURL* url) { requestedURL_ = url; }

  Frame windowFrame() const override;
  void setWindowFrame(const Frame& frame) override;
  Frame webViewFrame() const override;
  void setWebViewFrame(const Frame& frame) override;
  void setTitle(const std::string& title) override;
  void setMinimumSize(double width, double height) override;
  void enableZoomButton() override;
  void makeResizable() override;
  void loadHTML(const std::string& html, const std::string& path) override;
  void loadAddress(const std::string& address) override;
  void openInBrowser(const std::string& address) override;
  void terminate() override;

 private:
  AppDelegate* delegate_;
  NSURL* requestedURL_ = nil;
  std::optional<std::string> reportedSpinnerAddress_;
};

// Returns the UTF-8 form of a string. No value if `text` is nil or has no UTF-8 form.
std::optional<std::string> textOf(NSString* text);
