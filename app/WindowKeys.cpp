#include "app/WindowKeys.h"

#include <strings.h>

namespace {

using Action = KeyDecision::Action;

constexpr unsigned long kEveryModifier = 0xFFFF0000UL;

struct Shortcut {
  const char* characters;
  EditingCommand command;
  bool needsFirstResponder;
};

constexpr Shortcut kShortcuts[] = {
    {"a", EditingCommand::kSelectAll, true}, {"c", EditingCommand::kCopy, true},  {"v", EditingCommand::kPaste, true},
    {"x", EditingCommand::kCut, true},       {"z", EditingCommand::kUndo, false},
};

}  // namespace

KeyDecision decideKey(const std::optional<std::string>& characters, unsigned long modifiers,
                      const std::function<bool(EditingCommand)>& firstResponderSupports) {
  if (!characters) return {Action::kDrop, std::nullopt};
  if ((modifiers & kEveryModifier) != kKeyCommand) return {Action::kPassOn, std::nullopt};

  for (const Shortcut& shortcut : kShortcuts) {
    if (::strcasecmp(characters->c_str(), shortcut.characters) != 0) continue;
    if (shortcut.needsFirstResponder && !firstResponderSupports(shortcut.command)) break;
    return {Action::kPerform, shortcut.command};
  }
  return {Action::kDrop, std::nullopt};
}
