// Which key means which editing command: the usual shortcuts of a page, without a menu bar.
//
// Asked about keys that the page has not taken. Only the Command key alone makes a shortcut; on a platform without one
// its primary accelerator (Control on Linux) is given as the Command bit, and every other modifier as its own bit.
// Plain C++, no state.

#pragma once

#include <functional>
#include <optional>
#include <string>

// The modifier bits of a key event, numbered as Cocoa's; the low 16 bits tell devices apart and do not count.
enum KeyModifier : unsigned long {
  kKeyCapsLock = 1UL << 16,
  kKeyShift = 1UL << 17,
  kKeyControl = 1UL << 18,
  kKeyOption = 1UL << 19,
  kKeyCommand = 1UL << 20,
  kKeyNumericPad = 1UL << 21,
  kKeyFunction = 1UL << 23,
};

enum class EditingCommand { kSelectAll, kCopy, kPaste, kCut, kUndo };

struct KeyDecision {
  enum class Action {
    kPassOn,   // the event goes on as though nobody had looked at it
    kDrop,     // nobody gets the event
    kPerform,  // `command` goes to the window's content
  };

  Action action = Action::kPassOn;
  std::optional<EditingCommand> command;
};

// What to do with a key. `characters` are those of the key without its modifiers, UTF-8, missing when it has none.
// `firstResponderDoes` answers whether whatever has the keyboard knows a command; undo is not asked about.
//   "c", kKeyCommand, copies          => perform copy
//   "C", kKeyCommand, copies          => perform copy
//   "c", kKeyCommand, does not copy   => drop
//   "c", kKeyCommand | kKeyShift      => pass on
//   "k", kKeyCommand                  => drop
//   missing, any                      => drop
KeyDecision decideKey(const std::optional<std::string>& characters, unsigned long modifiers,
                      const std::function<bool(EditingCommand)>& firstResponderDoes);
