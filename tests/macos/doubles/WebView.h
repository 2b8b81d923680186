// What a test does with the doubles of the web view.

#pragma once

#import <WebKit/WebKit.h>

#include <functional>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

@interface WebDataSource (Double)
- (id)initWithRequest:(NSURLRequest*)request;
@end

@interface WebFrame (Double)
// A frame in a page, or the main frame.
- (id)initWithWebView:(WebView*)webView;

// The frame shows the page that the request asked for from now on; nil is none.
- (void)showRequest:(NSURLRequest*)request;
@end

// Writes down what it is told.
@interface PolicyListener : NSObject <WebPolicyDecisionListener>
+ (PolicyListener*)listener;
@end

namespace doubles {

// What happens once a frame has been asked to load; nothing unless a test says so.
extern std::function<void(WebView*, WebFrame*, NSURLRequest*)> whenAskedToLoad;

}  // namespace doubles

#pragma GCC diagnostic pop
