// Subclasses of the application and the window that record their calls.

#pragma once

#import <Cocoa/Cocoa.h>

#include "app/cocoa/SVOWindow.h"

// `terminate:` does not terminate.
@interface RecordingApplication : NSApplication
@end

// Has its own zoom button: on Linux the window manager draws it.
@interface RecordingWindow : SVOWindow {
 @private
  NSButton* _zoomButton;
}
@end

namespace doubles {

// Replaces `keyDown:` of NSWindow and `openURL:` of NSWorkspace by methods that only record.
void replaceDesktopMethods();

// The URL of the last `openURL:`.
NSURL* lastOpenedUrl();

}  // namespace doubles
