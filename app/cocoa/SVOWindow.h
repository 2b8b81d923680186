// The sign-in window. Can always become the key window and the main window. Handles the usual editing shortcuts, which
// have no menu items.

#pragma once

#import <Cocoa/Cocoa.h>

@interface SVOWindow : NSWindow

- (BOOL)canBecomeKeyWindow;
- (BOOL)canBecomeMainWindow;
- (BOOL)acceptsFirstResponder;

// Receives the keys that the page does not handle. `decideKey` maps them to commands. The first responder must support
// the command; the content view performs it.
- (void)keyDown:(NSEvent*)event;

@end
