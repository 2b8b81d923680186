#include "app/cocoa/CocoaSignInWindow.h"

#include "app/SpinnerPage.h"
#include "app/cocoa/AppDelegate.h"
#include "platform/macos/FoundationText.h"

namespace {

using platform::stringOf;

// Foundation throws for nil, but returns nil for a string that is not an address.
NSURL* urlOf(NSString* address) {
  return address == nil ? nil : [NSURL URLWithString:address];
}

Frame frameOf(NSRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

NSRect rectOf(const Frame& frame) {
  return NSMakeRect(frame.x, frame.y, frame.width, frame.height);
}

}  // namespace

std::optional<std::string> textOf(NSString* text) {
  const char* const bytes = [text UTF8String];
  if (bytes == nullptr) return std::nullopt;
  return bytes;
}

std::optional<std::string> CocoaSignInWindow::addressOf(NSURL* url) const {
  std::optional<std::string> address = textOf([url absoluteString]);
  if (address && address == reportedSpinnerAddress_) return spinnerHTMLBaseURL;
  return address;
}

Frame CocoaSignInWindow::windowFrame() const {
  return frameOf([[delegate_ window] frame]);
}

void CocoaSignInWindow::setWindowFrame(const Frame& frame) {
  [[delegate_ window] setFrame:rectOf(frame) display:YES animate:YES];
}

void CocoaSignInWindow::setTitle(const std::string& title) {
  NSString* const text = stringOf(title);
  if (text != nil) [[delegate_ window] setTitle:text];
}

void CocoaSignInWindow::setMinimumSize(double width, double height) {
  [[delegate_ window] setMinSize:NSMakeSize(width, height)];
}

void CocoaSignInWindow::enableZoomButton() {
  [[[delegate_ window] standardWindowButton:NSWindowZoomButton] setEnabled:YES];
}

void CocoaSignInWindow::makeResizable() {
  SVOWindow* const window = [delegate_ window];
  [window setStyleMask:[window styleMask] | NSWindowStyleMaskResizable];
}

void CocoaSignInWindow::openInBrowser(const std::string&) {
  if (requestedURL_ != nil) [[NSWorkspace sharedWorkspace] openURL:requestedURL_];  // throws for nil
}

void CocoaSignInWindow::terminate() {
  [[NSApplication sharedApplication] terminate:delegate_];
}

// The legacy web view and stringByAddingPercentEscapesUsingEncoding: are deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

Frame CocoaSignInWindow::webViewFrame() const {
  return frameOf([[delegate_ webView] frame]);
}

void CocoaSignInWindow::setWebViewFrame(const Frame& frame) {
  [[delegate_ webView] setFrame:rectOf(frame)];
}

// A file URL escapes more characters than a string's percent escapes (";" and "?") and decomposes letters with marks.
// The address that the web view will report is therefore stored beside `spinnerHTMLBaseURL`.
void CocoaSignInWindow::loadHTML(const std::string& html, const std::string& path) {
  NSString* const file = stringOf(path);
  NSURL* const baseURL = file == nil ? nil : [NSURL fileURLWithPath:file];
  if (const auto escaped = textOf([file stringByAddingPercentEscapesUsingEncoding:NSUTF8StringEncoding])) {
    spinnerHTMLBaseURL = "file://" + *escaped;
  }
  reportedSpinnerAddress_ = textOf([baseURL absoluteString]);
  [[[delegate_ webView] mainFrame] loadHTMLString:stringOf(html) baseURL:baseURL];
}

void CocoaSignInWindow::loadAddress(const std::string& address) {
  NSURLRequest* const request = [NSURLRequest requestWithURL:urlOf(stringOf(address))];
  [[[delegate_ webView] mainFrame] loadRequest:request];
}

#pragma GCC diagnostic pop
