// The application object. The property list names it as the principal class.

#pragma once

#import <Cocoa/Cocoa.h>

@interface SVOApplication : NSApplication

// Requests the activation of the application once more when its window is shown: from macOS 14 on the system may refuse
// the request of a program that has only started.
- (void)finishLaunching;

// Asks the delegate as if the last window had closed, so that a run that has not ended sends its message. AppKit calls
// this method for the menu, the Dock, a logout and a shutdown, also while the window is minimized.
- (void)terminate:(id)sender;

@end
