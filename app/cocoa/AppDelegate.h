// The application on Cocoa: turns what AppKit and the web view tell into calls of the flow. It only translates; every
// decision is `SignInFlow`'s.
//
// Made by the main interface file, which connects `window` and `webView`. Main thread only.

#pragma once

#import <Cocoa/Cocoa.h>
#import <WebKit/WebKit.h>

#include "app/cocoa/SVOWindow.h"

struct SignIn;

// The web view of this program is deprecated as a whole, its name included.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

@interface AppDelegate : NSObject <NSApplicationDelegate, WebFrameLoadDelegate, WebPolicyDelegate> {
 @private
  SignIn* _signIn;
  SVOWindow* _window;
  WebView* _webView;
}

@property(nonatomic, retain) IBOutlet SVOWindow* window;
@property(nonatomic, retain) IBOutlet WebView* webView;

// Whether the window has taken the layout of the enterprise sign-in.
@property(nonatomic, assign) BOOL resizingDone;

@end

#pragma GCC diagnostic pop
