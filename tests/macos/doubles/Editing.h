// Key events, and views that receive editing commands.

#pragma once

#import <Cocoa/Cocoa.h>

NSEvent* keyPress(NSString* characters, NSUInteger modifiers);

// Records the editing commands and whether the window sent them.
@interface EditingView : NSView
- (void)undo;
@end

// Supports the same commands until they are disabled.
@interface EditingResponder : EditingView {
 @private
  BOOL _isDisabled;
}
- (void)disableCommands;
@end
