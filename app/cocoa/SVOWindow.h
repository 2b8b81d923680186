// The window. Can always become the key window, and adds the usual editing shortcuts without a menu bar.

#pragma once

#import <Cocoa/Cocoa.h>

@interface SVOWindow : NSWindow

- (BOOL)canBecomeKeyWindow;
- (BOOL)canBecomeMainWindow;
- (BOOL)acceptsFirstResponder;

// Gets the keys that the page has not used; `decideKey` maps them to commands. The first responder must support the
// command; the content view performs it.
- (void)keyDown:(NSEvent*)event;

@end
