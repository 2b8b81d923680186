#include "tests/macos/doubles/WebView.h"

#include <string>

#include "tests/macos/doubles/Journal.h"

using doubles::fails;
using doubles::note;
using doubles::text;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace doubles {

std::function<void(WebView*, WebFrame*, NSURLRequest*)> whenAskedToLoad;

}  // namespace doubles

@implementation WebPreferences

- (void)setJavaEnabled:(BOOL)flag {
  note("setJavaEnabled " + text(flag));
}

- (void)setPlugInsEnabled:(BOOL)flag {
  note("setPlugInsEnabled " + text(flag));
}

- (void)setJavaScriptEnabled:(BOOL)flag {
  note("setJavaScriptEnabled " + text(flag));
}

- (void)setLoadsImagesAutomatically:(BOOL)flag {
  note("setLoadsImagesAutomatically " + text(flag));
}

- (void)setTabsToLinks:(BOOL)flag {
  note("setTabsToLinks " + text(flag));
}

- (void)setJavaScriptCanOpenWindowsAutomatically:(BOOL)flag {
  note("setJavaScriptCanOpenWindowsAutomatically " + text(flag));
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
  note("request");
  return fails("request") ? nil : (NSMutableURLRequest*)_request;
}

@end

@implementation WebFrameView

- (void)setAllowsScrolling:(BOOL)flag {
  note("setAllowsScrolling " + text(flag));
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
  note("dataSource");
  return fails("dataSource") ? nil : _dataSource;
}

- (void)loadRequest:(NSURLRequest*)request {
  note("loadRequest " + text([request URL]));
  if (doubles::whenAskedToLoad) doubles::whenAskedToLoad(_webView, self, request);
}

- (void)loadHTMLString:(NSString*)string baseURL:(NSURL*)URL {
  note("loadHTMLString " + text(string) + " base " + text(URL));
  if (doubles::whenAskedToLoad) doubles::whenAskedToLoad(_webView, self, [NSURLRequest requestWithURL:URL]);
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
  note("webView frame");
  return [super frame];
}

- (void)setFrame:(NSRect)frame {
  note("webView setFrame " + text(frame));
  const doubles::Inside inside;
  [super setFrame:frame];
}

- (WebPreferences*)preferences {
  note("preferences");
  return fails("preferences") ? nil : _preferences;
}

- (WebFrame*)mainFrame {
  return _mainFrame;
}

- (void)setFrameLoadDelegate:(id<WebFrameLoadDelegate>)delegate {
  note(std::string("setFrameLoadDelegate ") + object_getClassName(delegate));
  _frameLoadDelegate = delegate;
}

- (id<WebFrameLoadDelegate>)frameLoadDelegate {
  return _frameLoadDelegate;
}

- (void)setPolicyDelegate:(id<WebPolicyDelegate>)delegate {
  note(std::string("setPolicyDelegate ") + object_getClassName(delegate));
  _policyDelegate = delegate;
}

- (id<WebPolicyDelegate>)policyDelegate {
  return _policyDelegate;
}

@end

@implementation PolicyListener

+ (PolicyListener*)listener {
  return [[[PolicyListener alloc] init] autorelease];
}

- (void)use {
  note("use");
}

- (void)download {
  note("download");
}

- (void)ignore {
  note("ignore");
}

@end

#pragma GCC diagnostic pop
