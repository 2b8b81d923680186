// Lets the web view's double load pages. The application becomes active as on macOS 14, if no other program yields: a
// request during its launch is refused.
//
// Every address has a page; some addresses have an effect.
//   "then:/ADDRESS"    loads ADDRESS next
//   "close:/"          closes the window
//   "quit:/"           presses the shortcut that quits, while the window is minimized
//   "logout:/"         ends the application as a logout and the Dock's menu do
//   "active:/ADDRESS"  loads ADDRESS next if the application is active, and closes the window otherwise
//   "gone:/"           fails before the first byte

#include <utility>

#include "tests/macos/doubles/Editing.h"
#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/WebView.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

bool active = false;

void activate(NSApplication*, SEL, BOOL flag) {
  active = flag;
}

BOOL isActive(NSApplication*, SEL) {
  return active ? YES : NO;
}

// The first load is the end of the launch. GNUstep activates every application by itself.
void refuseFormerActivation() {
  static bool isRefused = false;
  if (std::exchange(isRefused, true)) return;
  doubles::replaceMethod([NSApplication class], @selector(activateIgnoringOtherApps:), activate, "v@:c");
  doubles::replaceMethod([NSApplication class], @selector(isActive), isActive, "c@:");
}

}  // namespace

// One load. Each step is an event of the run loop.
@interface PageLoad : NSObject {
 @private
  WebView* _webView;
  WebFrame* _frame;
  NSURLRequest* _request;
}
- (id)initWithFrame:(WebFrame*)frame webView:(WebView*)webView request:(NSURLRequest*)request;
- (void)start;
- (void)finish;
- (void)load:(NSString*)address;
@end

@implementation PageLoad

- (id)initWithFrame:(WebFrame*)frame webView:(WebView*)webView request:(NSURLRequest*)request {
  self = [super init];
  if (self == nil) return nil;
  _webView = webView;
  _frame = frame;
  _request = [request retain];
  return self;
}

- (void)dealloc {
  [_request release];
  [super dealloc];
}

- (void)start {
  [[_webView frameLoadDelegate] webView:_webView didStartProvisionalLoadForFrame:_frame];
  [self performSelector:@selector(finish) withObject:nil afterDelay:0];
}

- (void)load:(NSString*)address {
  [_frame loadRequest:[NSURLRequest requestWithURL:[NSURL URLWithString:address]]];
}

- (void)finish {
  NSString* const address = [[_request URL] absoluteString];
  if ([address hasPrefix:@"gone:"]) {
    NSError* const error = [NSError errorWithDomain:@"NSURLErrorDomain" code:-1003 userInfo:nil];
    [[_webView frameLoadDelegate] webView:_webView didFailProvisionalLoadWithError:error forFrame:_frame];
    return;
  }
  [_frame showRequest:_request];
  [[_webView frameLoadDelegate] webView:_webView didFinishLoadForFrame:_frame];
  if ([address hasPrefix:@"then:/"]) [self load:[address substringFromIndex:6]];
  if ([address hasPrefix:@"active:/"] && [NSApp isActive]) return [self load:[address substringFromIndex:8]];
  if ([address hasPrefix:@"close:"] || [address hasPrefix:@"active:"]) [[_webView window] performClose:nil];
  if ([address hasPrefix:@"quit:"]) {
    [[_webView window] miniaturize:nil];
    [[NSApp mainMenu] performKeyEquivalent:keyPress(@"q", NSCommandKeyMask)];
  }
  if ([address hasPrefix:@"logout:"]) [NSApp terminate:nil];
}

@end

@interface PageLoadsSetup : NSObject
@end

@implementation PageLoadsSetup

+ (void)load {
  doubles::onLoadRequest = [](WebView* webView, WebFrame* frame, NSURLRequest* request) {
    refuseFormerActivation();
    PageLoad* const load = [[[PageLoad alloc] initWithFrame:frame webView:webView request:request] autorelease];
    [load performSelector:@selector(start) withObject:nil afterDelay:0];
  };
}

@end
