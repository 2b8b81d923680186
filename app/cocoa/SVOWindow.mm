#include "app/cocoa/SVOWindow.h"

#include <optional>
#include <string>

#include "app/WindowKeys.h"
#include "platform/macos/FoundationText.h"

namespace {

SEL actionFor(EditingCommand command) {
  switch (command) {
    case EditingCommand::kSelectAll:
      return @selector(selectAll:);
    case EditingCommand::kCopy:
      return @selector(copy:);
    case EditingCommand::kPaste:
      return @selector(paste:);
    case EditingCommand::kCut:
      return @selector(cut:);
    case EditingCommand::kUndo:
      break;
  }
  return @selector(undo);
}

// A string without a UTF-8 form is not missing; it matches no shortcut.
std::optional<std::string> charactersOf(NSEvent* event) {
  NSString* const characters = [event charactersIgnoringModifiers];
  if (characters == nil) return std::nullopt;
  return platform::textOf(characters);
}

void perform(EditingCommand command, NSWindow* window) {
  if (command == EditingCommand::kUndo) {
    [[window contentView] performSelector:actionFor(command)];
  } else {
    [[window contentView] performSelector:actionFor(command) withObject:window];
  }
}

}  // namespace

@implementation SVOWindow

- (BOOL)canBecomeKeyWindow {
  return YES;
}

- (BOOL)canBecomeMainWindow {
  return YES;
}

- (BOOL)acceptsFirstResponder {
  return YES;
}

- (void)keyDown:(NSEvent*)event {
  NSResponder* const responder = [self firstResponder];
  const KeyDecision decision = decideKey(
      charactersOf(event), [event modifierFlags],
      [responder](EditingCommand command) { return [responder respondsToSelector:actionFor(command)] == YES; });
  if (decision.action == KeyDecision::Action::kPassOn) [super keyDown:event];
  if (decision.command) perform(*decision.command, self);
}

@end
