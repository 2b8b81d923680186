// What keys are pressed on, and what is then asked to edit.

#pragma once

#import <Cocoa/Cocoa.h>

NSEvent* keyPress(NSString* characters, NSUInteger modifiers);

// Writes down the editing commands that it gets, and from whom.
@interface EditingView : NSView
- (void)undo;
@end

// Knows the same commands until it forgets them.
@interface EditingResponder : EditingView {
 @private
  BOOL _forgetful;
}
- (void)forget;
@end
