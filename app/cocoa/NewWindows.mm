#include "app/cocoa/NewWindows.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

@implementation NewWindows

- (void)dealloc {
  [_hiddenView setPolicyDelegate:nil];
  [_hiddenView release];
  [super dealloc];
}

- (void)open:(NSURLRequest*)request listener:(id<WebPolicyDecisionListener>)listener {
  [[_opener policyDelegate] webView:_opener
      decidePolicyForNewWindowAction:nil
                             request:request
                        newFrameName:nil
                    decisionListener:listener];
}

- (WebView*)webView:(WebView*)sender createWebViewWithRequest:(NSURLRequest*)request {
  _opener = sender;
  if ([request URL] != nil) {
    [self open:request listener:nil];
    return nil;
  }
  if (_hiddenView == nil) {
    _hiddenView = [[WebView alloc] initWithFrame:NSZeroRect];
    [_hiddenView setPolicyDelegate:self];
  }
  return _hiddenView;
}

- (void)webView:(WebView*)webView
    decidePolicyForNavigationAction:(NSDictionary*)actionInformation
                            request:(NSURLRequest*)request
                              frame:(WebFrame*)frame
                   decisionListener:(id<WebPolicyDecisionListener>)listener {
  (void)actionInformation;
  const bool isWindow = [frame isEqual:[webView mainFrame]];
  const bool isEmptyPage = [[[request URL] scheme] caseInsensitiveCompare:@"about"] == NSOrderedSame;
  if (isWindow && [request URL] != nil && !isEmptyPage) return [self open:request listener:listener];
  [listener ignore];
}

@end

#pragma GCC diagnostic pop
