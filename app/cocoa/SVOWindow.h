// The window: always able to take the keyboard, and giving its page the usual editing shortcuts without a menu bar.

#pragma once

#import <Cocoa/Cocoa.h>

@interface SVOWindow : NSWindow

- (BOOL)canBecomeKeyWindow;
- (BOOL)canBecomeMainWindow;
- (BOOL)acceptsFirstResponder;

// Gets the keys that the page has not taken; `decideKey` says what they mean. Whether a command is known is asked of
// the first responder; the command itself goes to the content view.
- (void)keyDown:(NSEvent*)event;

@end
