#include "tests/macos/doubles/Application.h"

#include <string>

#include "tests/macos/doubles/CallLog.h"
#include "tests/macos/doubles/Methods.h"

using doubles::record;
using doubles::RecordingPaused;
using doubles::text;

namespace doubles {
namespace {

NSURL* openedUrl = nil;

void keyDown(NSWindow*, SEL, NSEvent* event) {
  record("super keyDown " + text([event charactersIgnoringModifiers]));
}

// Throws for nil, as on macOS.
BOOL openUrl(NSWorkspace*, SEL, NSURL* url) {
  if (url == nil) [NSException raise:NSInvalidArgumentException format:@"nil URL"];
  record("openURL " + text(url));
  [openedUrl release];
  openedUrl = [url retain];
  return YES;
}

}  // namespace

void replaceDesktopMethods() {
  replaceMethod([NSWindow class], @selector(keyDown:), keyDown, "v@:@");
  replaceMethod([NSWorkspace class], @selector(openURL:), openUrl, "c@:@");
}

NSURL* lastOpenedUrl() {
  return openedUrl;
}

}  // namespace doubles

@implementation RecordingApplication

- (void)setDelegate:(id)delegate {
  record(std::string("application setDelegate ") + (delegate == nil ? "nil" : object_getClassName(delegate)));
  const RecordingPaused pause;
  [super setDelegate:delegate];
}

- (void)activateIgnoringOtherApps:(BOOL)flag {
  record("activateIgnoringOtherApps " + text(flag));
  const RecordingPaused pause;
  [super activateIgnoringOtherApps:flag];
}

- (void)terminate:(id)sender {
  (void)sender;
  record("terminate");
}

@end

@implementation NSWindow (StyleMask)

// GNUstep lacks this method. The drawn decoration does not change.
- (void)setStyleMask:(NSUInteger)mask {
  _styleMask = mask;
}

@end

@implementation RecordingWindow

- (void)dealloc {
  [_zoomButton release];
  [super dealloc];
}

- (NSRect)frame {
  record("window frame");
  return [super frame];
}

// Sets the frame before it returns, as on macOS. GNUstep animates it while the event loop runs.
- (void)setFrame:(NSRect)frame display:(BOOL)display animate:(BOOL)animate {
  record("window setFrame " + text(frame) + " display " + text(display) + " animate " + text(animate));
  const RecordingPaused pause;
  [super setFrame:frame display:display];
}

- (void)setContentView:(NSView*)view {
  record(std::string("setContentView ") + object_getClassName(view));
  const RecordingPaused pause;
  [super setContentView:view];
}

- (BOOL)makeFirstResponder:(NSResponder*)responder {
  record(std::string("makeFirstResponder ") + object_getClassName(responder));
  const RecordingPaused pause;
  return [super makeFirstResponder:responder];
}

- (void)setTitle:(NSString*)title {
  record("setTitle " + text(title));
  const RecordingPaused pause;
  [super setTitle:title];
}

- (NSButton*)standardWindowButton:(NSWindowButton)kind {
  if (kind != NSWindowZoomButton) return [super standardWindowButton:kind];
  if (_zoomButton == nil) {
    _zoomButton = [[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)];
    [_zoomButton setEnabled:NO];
  }
  return _zoomButton;
}

@end
