// Lets the web view's double load pages. Every address has a page; some addresses have an effect.
//   "then:/ADDRESS"  loads ADDRESS next
//   "close:/"        closes the window
//   "quit:/"         presses the shortcut that quits
//   "gone:/"         fails before the first byte

#include "tests/macos/doubles/Editing.h"
#include "tests/macos/doubles/WebView.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

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

- (void)finish {
  NSString* const address = [[_request URL] absoluteString];
  if ([address hasPrefix:@"gone:"]) {
    NSError* const error = [NSError errorWithDomain:@"NSURLErrorDomain" code:-1003 userInfo:nil];
    [[_webView frameLoadDelegate] webView:_webView didFailProvisionalLoadWithError:error forFrame:_frame];
    return;
  }
  [_frame showRequest:_request];
  [[_webView frameLoadDelegate] webView:_webView didFinishLoadForFrame:_frame];
  if ([address hasPrefix:@"then:/"]) {
    NSURL* const next = [NSURL URLWithString:[address substringFromIndex:6]];
    [_frame loadRequest:[NSURLRequest requestWithURL:next]];
  }
  if ([address hasPrefix:@"close:"]) [[_webView window] performClose:nil];
  if ([address hasPrefix:@"quit:"]) [[NSApp mainMenu] performKeyEquivalent:keyPress(@"q", NSCommandKeyMask)];
}

@end

@interface PageLoadsSetup : NSObject
@end

@implementation PageLoadsSetup

+ (void)load {
  doubles::onLoadRequest = [](WebView* webView, WebFrame* frame, NSURLRequest* request) {
    PageLoad* const load = [[[PageLoad alloc] initWithFrame:frame webView:webView request:request] autorelease];
    [load performSelector:@selector(start) withObject:nil afterDelay:0];
  };
}

@end
