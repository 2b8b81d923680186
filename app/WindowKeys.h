// Maps keys to editing commands: the usual shortcuts of a page, without a menu bar.
//
// - For keys that the page has not used.
// - Only the Command key alone makes a shortcut. On a platform without one its primary accelerator (Control on Linux)
//   is passed as the Command bit, every other modifier as its own bit.
// - Plain C++, no state.

#pragma once

#include <functional>
#include <optional>
#include <string>

// The modifier bits of a key event, as in Cocoa. The low 16 bits identify the device and are ignored.
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
    kPassOn,   // the event is handled as if there were no shortcuts
    kDrop,     // the event is discarded
    kPerform,  // `command` is sent to the window's content
  };

  Action action = Action::kPassOn;
  std::optional<EditingCommand> command;
};

// `characters`: of the key without its modifiers, UTF-8; missing if it has none. `firstResponderSupports` returns
// whether the object with the keyboard focus supports a command; it is not called for undo.
//   "c", kKeyCommand, copies          => perform copy
//   "C", kKeyCommand, copies          => perform copy
//   "c", kKeyCommand, does not copy   => drop
//   "c", kKeyCommand | kKeyShift      => pass on
//   "k", kKeyCommand                  => drop
//   missing, any                      => drop
KeyDecision decideKey(const std::optional<std::string>& characters, unsigned long modifiers,
                      const std::function<bool(EditingCommand)>& firstResponderSupports);
