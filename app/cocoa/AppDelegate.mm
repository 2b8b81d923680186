#include "app/cocoa/AppDelegate.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/SignInFlow.h"
#include "app/cocoa/CocoaSignInWindow.h"
#include "platform/macos/FoundationText.h"

struct SignIn {
  explicit SignIn(AppDelegate* delegate) : window(delegate), flow(window) {}

  CocoaSignInWindow window;
  SignInFlow flow;
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

void configure(WebPreferences* preferences) {
  [preferences setJavaEnabled:NO];
  [preferences setPlugInsEnabled:NO];
  [preferences setJavaScriptEnabled:YES];
  [preferences setLoadsImagesAutomatically:YES];
  [preferences setTabsToLinks:YES];
  [preferences setJavaScriptCanOpenWindowsAutomatically:YES];
}

NSURL* requestedURL(WebFrame* frame) {
  return [[[frame dataSource] request] URL];
}

// The hash of a domain is the same in every run.
LoadFailure failureOf(NSError* error, std::optional<std::string> address, bool provisional) {
  return {std::move(address), static_cast<int>([error code]), static_cast<int>([[error domain] hash]), provisional};
}

}  // namespace

@implementation AppDelegate

- (id)init {
  self = [super init];
  if (self == nil) return nil;
  _signIn = std::make_unique<SignIn>(self).release();
  _newWindows = [[NewWindows alloc] init];
  return self;
}

- (void)dealloc {
  const std::unique_ptr<SignIn> owner(_signIn);
  [_newWindows release];
  [_window release];
  [_webView release];
  [super dealloc];
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  (void)notification;
  [self setResizingDone:NO];

  WebPreferences* const preferences = [_webView preferences];
  if (preferences == nil) return;
  configure(preferences);

  NSApplication* const application = [NSApplication sharedApplication];
  [_webView setFrameLoadDelegate:self];
  [_window setContentView:_webView];
  [_webView setPolicyDelegate:self];
  [_webView setUIDelegate:_newWindows];
  [application setDelegate:self];
  [application activateIgnoringOtherApps:YES];
  [_window makeFirstResponder:_webView];

  _signIn->flow.launch(platform::textOf([[NSBundle mainBundle] bundlePath]));
}

- (void)webView:(WebView*)sender didFinishLoadForFrame:(WebFrame*)frame {
  (void)sender;
  if (![frame isEqual:[_webView mainFrame]] || _signIn->flow.hasEnded()) return;
  [[[_webView mainFrame] frameView] setAllowsScrolling:NO];
  _signIn->flow.mainFrameFinished(_signIn->window.addressOf(requestedURL(frame)));
}

- (void)webView:(WebView*)sender didStartProvisionalLoadForFrame:(WebFrame*)frame {
  (void)sender;
  (void)frame;
}

- (void)webView:(WebView*)sender didFailLoadWithError:(NSError*)error forFrame:(WebFrame*)frame {
  (void)sender;
  _signIn->flow.loadFailed(failureOf(error, textOf([requestedURL(frame) absoluteString]), false));
}

- (void)webView:(WebView*)sender didFailProvisionalLoadWithError:(NSError*)error forFrame:(WebFrame*)frame {
  (void)sender;
  _signIn->flow.loadFailed(failureOf(error, textOf([requestedURL(frame) absoluteString]), true));
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(id)sender {
  (void)sender;
  _signIn->flow.lastWindowClosed();
  return YES;
}

- (void)webView:(WebView*)sender
    decidePolicyForNewWindowAction:(NSDictionary*)actionInformation
                           request:(NSURLRequest*)request
                      newFrameName:(NSString*)frameName
                  decisionListener:(id<WebPolicyDecisionListener>)listener {
  (void)sender;
  (void)actionInformation;
  (void)frameName;
  [listener ignore];
  _signIn->window.setRequestedURL([request URL]);
  _signIn->flow.newWindowRequested(textOf([[request URL] absoluteString]).value_or(""));
  _signIn->window.setRequestedURL(nil);
}

- (SVOWindow*)window {
  return _window;
}

- (void)setWindow:(SVOWindow*)window {
  [window retain];
  [_window release];
  _window = window;
}

- (WebView*)webView {
  return _webView;
}

- (void)setWebView:(WebView*)webView {
  [webView retain];
  [_webView release];
  _webView = webView;
}

- (BOOL)resizingDone {
  return _signIn->flow.resizingDone() ? YES : NO;
}

- (void)setResizingDone:(BOOL)done {
  _signIn->flow.setResizingDone(done == YES);
}

@end

#pragma GCC diagnostic pop
