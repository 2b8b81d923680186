// The legacy web view. Records its calls and loads nothing by itself.

#pragma once

#import <WebKit/WebKit.h>

#include <functional>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

@interface WebDataSource (Double)
- (id)initWithRequest:(NSURLRequest*)request;
@end

@interface WebFrame (Double)
// Creates a main frame or a sub-frame.
- (id)initWithWebView:(WebView*)webView;

// Sets the request of the committed page; nil: no page. A provisional load has not changed it.
- (void)showRequest:(NSURLRequest*)request;
@end

// Records the decision.
@interface PolicyListener : NSObject <WebPolicyDecisionListener>
+ (PolicyListener*)listener;
@end

namespace doubles {

// Called for each load that a frame is asked for. Empty: nothing happens.
extern std::function<void(WebView*, WebFrame*, NSURLRequest*)> onLoadRequest;

}  // namespace doubles

#pragma GCC diagnostic pop
