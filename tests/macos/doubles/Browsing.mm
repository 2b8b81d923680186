// A web view that loads: every address has a page, and some have pages on which something happens.
//   "then:/ADDRESS"  the person goes on to ADDRESS
//   "close:/"        the person closes the window
//   "quit:/"         the person quits by the keyboard
//   "gone:/"         fails before its first byte

#include "tests/macos/doubles/Editing.h"
#include "tests/macos/doubles/WebView.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

// One load, told step by step from the event loop.
@interface Load : NSObject {
 @private
  WebView* _webView;
  WebFrame* _frame;
  NSURLRequest* _request;
}
- (id)initIn:(WebFrame*)frame of:(WebView*)webView request:(NSURLRequest*)request;
- (void)start;
- (void)end;
@end

@implementation Load

- (id)initIn:(WebFrame*)frame of:(WebView*)webView request:(NSURLRequest*)request {
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
  [self performSelector:@selector(end) withObject:nil afterDelay:0];
}

- (void)end {
  NSString* const address = [[_request URL] absoluteString];
  [_frame showRequest:_request];
  if ([address hasPrefix:@"gone:"]) {
    NSError* const error = [NSError errorWithDomain:@"NSURLErrorDomain" code:-1003 userInfo:nil];
    [[_webView frameLoadDelegate] webView:_webView didFailProvisionalLoadWithError:error forFrame:_frame];
    return;
  }
  [[_webView frameLoadDelegate] webView:_webView didFinishLoadForFrame:_frame];
  if ([address hasPrefix:@"then:/"]) {
    NSURL* const next = [NSURL URLWithString:[address substringFromIndex:6]];
    [_frame loadRequest:[NSURLRequest requestWithURL:next]];
  }
  if ([address hasPrefix:@"close:"]) [[_webView window] performClose:nil];
  if ([address hasPrefix:@"quit:"]) [[NSApp mainMenu] performKeyEquivalent:keyPress(@"q", NSCommandKeyMask)];
}

@end

@interface Browsing : NSObject
@end

@implementation Browsing

+ (void)load {
  doubles::whenAskedToLoad = [](WebView* webView, WebFrame* frame, NSURLRequest* request) {
    Load* const load = [[[Load alloc] initIn:frame of:webView request:request] autorelease];
    [load performSelector:@selector(start) withObject:nil afterDelay:0];
  };
}

@end
