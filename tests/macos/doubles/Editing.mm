#include "tests/macos/doubles/Editing.h"

#include <string>

#include "tests/macos/doubles/CallLog.h"

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

- (void)record:(const char*)command from:(id)sender {
  doubles::record(std::string(object_getClassName(self)) + " " + command +
                  (sender == [self window] ? " from the window" : ""));
}

- (void)selectAll:(id)sender {
  [self record:"selectAll" from:sender];
}

- (void)copy:(id)sender {
  [self record:"copy" from:sender];
}

- (void)paste:(id)sender {
  [self record:"paste" from:sender];
}

- (void)cut:(id)sender {
  [self record:"cut" from:sender];
}

- (void)undo {
  [self record:"undo" from:nil];
}

@end

@implementation EditingResponder

- (void)disableCommands {
  _isDisabled = YES;
}

- (BOOL)respondsToSelector:(SEL)selector {
  static const SEL kCommands[] = {@selector(selectAll:), @selector(copy:), @selector(paste:), @selector(cut:)};
  for (const SEL command : kCommands) {
    if (_isDisabled && sel_isEqual(selector, command)) return NO;
  }
  return [super respondsToSelector:selector];
}

@end
