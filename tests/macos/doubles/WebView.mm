#include "tests/macos/doubles/WebView.h"

#include <string>

#include "tests/macos/doubles/CallLog.h"
#include "tests/macos/doubles/SystemDoubles.h"

using doubles::record;
using doubles::statusOf;
using doubles::text;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace doubles {

std::function<void(WebView*, WebFrame*, NSURLRequest*)> onLoadRequest;

}  // namespace doubles

@implementation WebPreferences

- (void)setJavaEnabled:(BOOL)flag {
  record("setJavaEnabled " + text(flag));
}

- (void)setPlugInsEnabled:(BOOL)flag {
  record("setPlugInsEnabled " + text(flag));
}

- (void)setJavaScriptEnabled:(BOOL)flag {
  record("setJavaScriptEnabled " + text(flag));
}

- (void)setLoadsImagesAutomatically:(BOOL)flag {
  record("setLoadsImagesAutomatically " + text(flag));
}

- (void)setTabsToLinks:(BOOL)flag {
  record("setTabsToLinks " + text(flag));
}

- (void)setJavaScriptCanOpenWindowsAutomatically:(BOOL)flag {
  record("setJavaScriptCanOpenWindowsAutomatically " + text(flag));
}

@end

@implementation WebDataSource

- (id)initWithRequest:(NSURLRequest*)request {
  self = [super init];
  if (self != nil) _request = [request retain];
  return self;
}

- (void)dealloc {
  [_request release];
  [super dealloc];
}

- (NSMutableURLRequest*)request {
  return statusOf("request") == 0 ? (NSMutableURLRequest*)_request : nil;
}

@end

@implementation WebFrameView

- (void)setAllowsScrolling:(BOOL)flag {
  record("setAllowsScrolling " + text(flag));
}

@end

@implementation WebFrame

- (id)initWithWebView:(WebView*)webView {
  self = [super init];
  if (self == nil) return nil;
  _webView = webView;
  _frameView = [[WebFrameView alloc] initWithFrame:NSZeroRect];
  return self;
}

- (void)dealloc {
  [_dataSource release];
  [_frameView release];
  [super dealloc];
}

- (void)showRequest:(NSURLRequest*)request {
  [_dataSource release];
  _dataSource = [[WebDataSource alloc] initWithRequest:request];
}

- (WebFrameView*)frameView {
  return _frameView;
}

- (WebDataSource*)dataSource {
  return statusOf("dataSource") == 0 ? _dataSource : nil;
}

- (void)loadRequest:(NSURLRequest*)request {
  record("loadRequest " + text([request URL]));
  if (doubles::onLoadRequest) doubles::onLoadRequest(_webView, self, request);
}

- (void)loadHTMLString:(NSString*)string baseURL:(NSURL*)URL {
  record("loadHTMLString " + text(string) + " base " + text(URL));
  if (doubles::onLoadRequest) doubles::onLoadRequest(_webView, self, [NSURLRequest requestWithURL:URL]);
}

@end

@implementation WebView

- (id)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  _preferences = [[WebPreferences alloc] init];
  _mainFrame = [[WebFrame alloc] initWithWebView:self];
  return self;
}

- (void)dealloc {
  [_preferences release];
  [_mainFrame release];
  [super dealloc];
}

- (BOOL)acceptsFirstResponder {
  return YES;
}

- (NSRect)frame {
  record("webView frame");
  return [super frame];
}

- (void)setFrame:(NSRect)frame {
  record("webView setFrame " + text(frame));
  const doubles::RecordingPaused pause;
  [super setFrame:frame];
}

- (WebPreferences*)preferences {
  record("preferences");
  return statusOf("preferences") == 0 ? _preferences : nil;
}

- (WebFrame*)mainFrame {
  return _mainFrame;
}

- (void)setFrameLoadDelegate:(id<WebFrameLoadDelegate>)delegate {
  record(std::string("setFrameLoadDelegate ") + object_getClassName(delegate));
  _frameLoadDelegate = delegate;
}

- (id<WebFrameLoadDelegate>)frameLoadDelegate {
  return _frameLoadDelegate;
}

- (void)setPolicyDelegate:(id<WebPolicyDelegate>)delegate {
  record(std::string("setPolicyDelegate ") + object_getClassName(delegate));
  _policyDelegate = delegate;
}

- (id<WebPolicyDelegate>)policyDelegate {
  return _policyDelegate;
}

- (void)setUIDelegate:(id<WebUIDelegate>)delegate {
  record(std::string("setUIDelegate ") + object_getClassName(delegate));
  _uiDelegate = delegate;
}

- (id<WebUIDelegate>)UIDelegate {
  return _uiDelegate;
}

@end

@implementation PolicyListener

+ (PolicyListener*)listener {
  return [[[PolicyListener alloc] init] autorelease];
}

- (void)use {
  record("use");
}

- (void)download {
  record("download");
}

- (void)ignore {
  record("ignore");
}

@end

#pragma GCC diagnostic pop
