// The application, the window and the desktop, real but for what the journal must see or the test must outlive.

#pragma once

#import <Cocoa/Cocoa.h>

#include "app/cocoa/SVOWindow.h"

// Does not terminate.
@interface JournalApplication : NSApplication
@end

// Has a zoom button of its own, since a window manager draws the real one.
@interface JournalWindow : SVOWindow {
 @private
  NSButton* _zoomButton;
}
@end

// What `keyDown:` of the superclass gets is written down.
@interface JournalWindow (Keys)
+ (void)watchSuperclass;
@end

@interface NSWorkspace (Journal)
// No browser is started from now on.
+ (void)watch;
@end

namespace doubles {

// The address that the browser was to open last.
NSURL* lastOpened();

}  // namespace doubles
