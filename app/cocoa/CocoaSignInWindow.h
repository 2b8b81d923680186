// The delegate's window and web view, as the flow asks for them. It decides nothing.

#pragma once

#import <Cocoa/Cocoa.h>

#include <optional>
#include <string>

#include "app/SignInWindow.h"

@class AppDelegate;

class CocoaSignInWindow : public SignInWindow {
 public:
  // Every call asks `delegate`, which must outlive this object, for its window and its web view.
  explicit CocoaSignInWindow(AppDelegate* delegate) : delegate_(delegate) {}

  // The text of an address that the web view reports, `spinnerHTMLBaseURL` for that of the spinner page; nothing when
  // there is no address or it has no UTF-8 form.
  std::optional<std::string> addressOf(NSURL* url) const;

  // What `openInBrowser` opens until it is set again. The text of an address would not do: a page's address may hold
  // letters that `URLWithString:` refuses.
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

// The UTF-8 form of a text; nothing when there is no text or no such form.
std::optional<std::string> textOf(NSString* text);
