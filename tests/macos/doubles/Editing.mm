#include "tests/macos/doubles/Editing.h"

#include <string>

#include "tests/macos/doubles/Journal.h"

NSEvent* keyPress(NSString* characters, NSUInteger modifiers) {
  return [NSEvent keyEventWithType:NSKeyDown
                          location:NSZeroPoint
                     modifierFlags:modifiers
                         timestamp:0
                      windowNumber:0
                           context:nil
                        characters:characters
       charactersIgnoringModifiers:characters
                         isARepeat:NO
                           keyCode:0];
}

@implementation EditingView

- (BOOL)acceptsFirstResponder {
  return YES;
}

- (void)note:(const char*)command from:(id)sender {
  doubles::note(std::string(object_getClassName(self)) + " " + command +
                (sender == [self window] ? " from the window" : ""));
}

- (void)selectAll:(id)sender {
  [self note:"selectAll" from:sender];
}

- (void)copy:(id)sender {
  [self note:"copy" from:sender];
}

- (void)paste:(id)sender {
  [self note:"paste" from:sender];
}

- (void)cut:(id)sender {
  [self note:"cut" from:sender];
}

- (void)undo {
  [self note:"undo" from:nil];
}

@end

@implementation EditingResponder

- (void)forget {
  _forgetful = YES;
}

- (BOOL)respondsToSelector:(SEL)selector {
  static const SEL kCommands[] = {@selector(selectAll:), @selector(copy:), @selector(paste:), @selector(cut:)};
  for (const SEL command : kCommands) {
    if (_forgetful && sel_isEqual(selector, command)) return NO;
  }
  return [super respondsToSelector:selector];
}

@end
