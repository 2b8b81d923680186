// The classes and methods of the legacy web view that the program uses, as documented. tests/macos/doubles implements
// them.

#pragma once

#include <Cocoa/Cocoa.h>
#include <Deprecated.h>

@class WebDataSource;
@class WebFrame;
@class WebFrameView;
@class WebPreferences;
@class WebView;

@protocol WebPolicyDecisionListener <NSObject>
- (void)use;
- (void)download;
- (void)ignore;
@end

SDK_DEPRECATED
@protocol WebFrameLoadDelegate <NSObject>
@optional
- (void)webView:(WebView*)sender didStartProvisionalLoadForFrame:(WebFrame*)frame;
- (void)webView:(WebView*)sender didFailProvisionalLoadWithError:(NSError*)error forFrame:(WebFrame*)frame;
- (void)webView:(WebView*)sender didFinishLoadForFrame:(WebFrame*)frame;
- (void)webView:(WebView*)sender didFailLoadWithError:(NSError*)error forFrame:(WebFrame*)frame;
@end

SDK_DEPRECATED
@protocol WebUIDelegate <NSObject>
@optional
- (WebView*)webView:(WebView*)sender createWebViewWithRequest:(NSURLRequest*)request;
@end

SDK_DEPRECATED
@protocol WebPolicyDelegate <NSObject>
@optional
- (void)webView:(WebView*)webView
    decidePolicyForNavigationAction:(NSDictionary*)actionInformation
                            request:(NSURLRequest*)request
                              frame:(WebFrame*)frame
                   decisionListener:(id<WebPolicyDecisionListener>)listener;
- (void)webView:(WebView*)webView
    decidePolicyForNewWindowAction:(NSDictionary*)actionInformation
                           request:(NSURLRequest*)request
                      newFrameName:(NSString*)frameName
                  decisionListener:(id<WebPolicyDecisionListener>)listener;
@end

SDK_DEPRECATED
@interface WebPreferences : NSObject
- (void)setJavaEnabled:(BOOL)flag SDK_DEPRECATED;
- (void)setPlugInsEnabled:(BOOL)flag SDK_DEPRECATED;
- (void)setJavaScriptEnabled:(BOOL)flag SDK_DEPRECATED;
- (void)setLoadsImagesAutomatically:(BOOL)flag SDK_DEPRECATED;
- (void)setTabsToLinks:(BOOL)flag SDK_DEPRECATED;
- (void)setJavaScriptCanOpenWindowsAutomatically:(BOOL)flag SDK_DEPRECATED;
@end

SDK_DEPRECATED
@interface WebDataSource : NSObject {
 @private
  NSURLRequest* _request;
}
- (NSMutableURLRequest*)request SDK_DEPRECATED;
@end

SDK_DEPRECATED
@interface WebFrameView : NSView
- (void)setAllowsScrolling:(BOOL)flag SDK_DEPRECATED;
@end

SDK_DEPRECATED
@interface WebFrame : NSObject {
 @private
  WebDataSource* _dataSource;
  WebFrameView* _frameView;
  WebView* _webView;
}
- (WebFrameView*)frameView SDK_DEPRECATED;
- (WebDataSource*)dataSource SDK_DEPRECATED;
- (void)loadRequest:(NSURLRequest*)request SDK_DEPRECATED;
- (void)loadHTMLString:(NSString*)string baseURL:(NSURL*)URL SDK_DEPRECATED;
@end

SDK_DEPRECATED
@interface WebView : NSView {
 @private
  WebPreferences* _preferences;
  WebFrame* _mainFrame;
  id _frameLoadDelegate;
  id _policyDelegate;
  id _uiDelegate;
}
- (WebPreferences*)preferences SDK_DEPRECATED;
- (WebFrame*)mainFrame SDK_DEPRECATED;
- (void)setFrameLoadDelegate:(id<WebFrameLoadDelegate>)delegate SDK_DEPRECATED;
- (id<WebFrameLoadDelegate>)frameLoadDelegate SDK_DEPRECATED;
- (void)setPolicyDelegate:(id<WebPolicyDelegate>)delegate SDK_DEPRECATED;
- (id<WebPolicyDelegate>)policyDelegate SDK_DEPRECATED;
- (void)setUIDelegate:(id<WebUIDelegate>)delegate SDK_DEPRECATED;
- (id<WebUIDelegate>)UIDelegate SDK_DEPRECATED;
@end
