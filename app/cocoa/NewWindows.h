// The UI delegate of the web view. Passes the windows that scripts request to the policy delegate of the web view,
// which opens them in the user's browser.
//
// - Links with a target do not come here: the web view asks its policy delegate itself.
// - The legacy web view mostly asks for a script's window without a request, and loads the address into the new web
// view
//   afterward. One hidden web view therefore takes the place of these windows. It loads nothing: each of its
//   navigations is a new window, except that to an empty page.
// - Main thread only.

#pragma once

#import <Cocoa/Cocoa.h>
#import <WebKit/WebKit.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

@interface NewWindows : NSObject <WebUIDelegate, WebPolicyDelegate> {
 @private
  WebView* _opener;  // not retained: it outlives its delegate
  WebView* _hiddenView;
}
@end

#pragma GCC diagnostic pop
