// The application delegate. Passes the events of AppKit and of the web view to `SignInFlow`.
//
// - The main interface file creates it and connects `window` and `webView`.
// - Main thread only.

#pragma once

#import <Cocoa/Cocoa.h>
#import <WebKit/WebKit.h>

#include "app/cocoa/NewWindows.h"
#include "app/cocoa/SVOWindow.h"

struct SignIn;

// The classes of the legacy web view are deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

@interface AppDelegate : NSObject <NSApplicationDelegate, WebFrameLoadDelegate, WebPolicyDelegate> {
 @private
  SignIn* _signIn;
  SVOWindow* _window;
  WebView* _webView;
  NewWindows* _newWindows;
}

@property(nonatomic, retain) IBOutlet SVOWindow* window;
@property(nonatomic, retain) IBOutlet WebView* webView;

// Whether the window has the layout of the enterprise sign-in.
@property(nonatomic, assign) BOOL resizingDone;

@end

#pragma GCC diagnostic pop
