#include "app/gtk/KeyEvents.h"

#include <cstddef>
#include <utility>

#include "app/WindowKeys.h"
#include "app/gtk/Glib.h"

namespace {

constexpr char kBackTab[] = "\x19";   // the character of Shift+Tab on macOS
constexpr guint32 kMaxAge = 600'000;  // milliseconds; an older time is that of another clock
constexpr unsigned long kIgnoredModifiers = kKeyCapsLock | kKeyNumericPad | kKeyFunction;

bool isAsciiLetter(guint key) {
  return (key >= GDK_KEY_a && key <= GDK_KEY_z) || (key >= GDK_KEY_A && key <= GDK_KEY_Z);
}

GdkModifierType primaryAccelerator(GdkKeymap* keymap) {
  return gdk_keymap_get_modifier_mask(keymap, GDK_MODIFIER_INTENT_PRIMARY_ACCELERATOR);
}

// Returns the Latin letter that the same key has in one of the user's layouts.
guint latinLetterOf(const GdkEventKey& event, GdkKeymap* keymap) {
  GdkKeymapKey* places = nullptr;
  guint* keys = nullptr;
  gint count = 0;
  if (!gdk_keymap_get_entries_for_keycode(keymap, event.hardware_keycode, &places, &keys, &count)) return event.keyval;
  const Owned<GdkKeymapKey, g_free> ownedPlaces(places);
  const Owned<guint, g_free> ownedKeys(keys);
  for (gint i = 0; i < count; ++i) {
    if (places[i].level == 0 && isAsciiLetter(keys[i])) return keys[i];
  }
  return event.keyval;
}

guint plainKeyOf(const GdkEventKey& event) {
  const bool isNonAsciiLetter = event.keyval > 0x7f && g_unichar_isalpha(gdk_keyval_to_unicode(event.keyval));
  if (!isNonAsciiLetter) return event.keyval;
  return latinLetterOf(event, gdk_keymap_get_for_display(gdk_window_get_display(event.window)));
}

bool isKeypad(guint key) {
  return (key >= GDK_KEY_KP_Space && key <= GDK_KEY_KP_9) || key == GDK_KEY_KP_Equal;
}

// The keys that have the function bit in Cocoa: arrows, Page Up and Down, Insert to Menu, F1 to F35.
bool isFunctionKey(guint key) {
  return (key >= GDK_KEY_Home && key <= GDK_KEY_Break) || (key >= GDK_KEY_F1 && key <= GDK_KEY_F35) ||
         key == GDK_KEY_Delete;
}

}  // namespace

std::optional<std::string> charactersOf(const GdkEventKey& event) {
  if (event.keyval == GDK_KEY_ISO_Left_Tab) return kBackTab;
  const gunichar letter = gdk_keyval_to_unicode(plainKeyOf(event));
  if (letter == 0 && !isFunctionKey(event.keyval)) return std::nullopt;
  char utf8[6];
  return std::string(utf8, letter == 0 ? 0 : static_cast<std::size_t>(g_unichar_to_utf8(letter, utf8)));
}

unsigned long modifiersOf(const GdkEventKey& event) {
  GdkKeymap* const keymap = gdk_keymap_get_for_display(gdk_window_get_display(event.window));
  auto state = static_cast<GdkModifierType>(event.state);
  gdk_keymap_add_virtual_modifiers(keymap, &state);

  const GdkModifierType command = primaryAccelerator(keymap);
  unsigned long result = 0;
  const auto map = [&](int from, KeyModifier to) {
    if ((state & from) != 0) result |= to;
  };
  map(command, kKeyCommand);
  map(GDK_CONTROL_MASK & ~command, kKeyControl);
  map(GDK_SUPER_MASK | GDK_HYPER_MASK | (GDK_META_MASK & ~command), kKeyControl);
  map(GDK_MOD1_MASK, kKeyOption);
  map(GDK_SHIFT_MASK, kKeyShift);
  map(GDK_LOCK_MASK, kKeyCapsLock);
  if (isKeypad(event.keyval)) result |= kKeyNumericPad;
  if (isFunctionKey(event.keyval)) result |= kKeyFunction;
  return result;
}

std::optional<WindowCommand> windowCommandOf(const GdkEventKey& event) {
  const unsigned long modifiers = modifiersOf(event) & ~kIgnoredModifiers;
  if (modifiers == kKeyOption && event.keyval == GDK_KEY_F4) return WindowCommand::kClose;
  const bool isZoomIn = event.keyval == GDK_KEY_plus || event.keyval == GDK_KEY_KP_Add || event.keyval == GDK_KEY_equal;
  if ((modifiers & ~kKeyShift) == kKeyCommand && isZoomIn) return WindowCommand::kZoomIn;
  if (modifiers != kKeyCommand) return std::nullopt;

  switch (plainKeyOf(event)) {
    case GDK_KEY_w:
    case GDK_KEY_W:
      return WindowCommand::kClose;
    case GDK_KEY_minus:
    case GDK_KEY_KP_Subtract:
      return WindowCommand::kZoomOut;
    case GDK_KEY_0:
    case GDK_KEY_KP_0:
    case GDK_KEY_KP_Insert:
      return WindowCommand::kZoomReset;
    default:
      return std::nullopt;
  }
}

bool copies(const GdkEventKey& event) {
  const unsigned long modifiers = modifiersOf(event) & ~kIgnoredModifiers;
  switch (plainKeyOf(event)) {
    case GDK_KEY_c:
    case GDK_KEY_C:
    case GDK_KEY_x:
    case GDK_KEY_X:
    case GDK_KEY_Insert:
    case GDK_KEY_KP_Insert:
      return modifiers == kKeyCommand;
    case GDK_KEY_Delete:
    case GDK_KEY_KP_Delete:
      return modifiers == kKeyShift;
    default:
      return false;
  }
}

bool isDeliberate(const GdkEvent* event) {
  const GdkEventType type = gdk_event_get_event_type(event);
  if (type == GDK_BUTTON_PRESS || type == GDK_TOUCH_END) return true;
  guint key = 0;
  (void)gdk_event_get_keyval(event, &key);
  return key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_space;
}

// Presses of different keys may have the same time. Events without a time come from programs, not from WebKit.
bool KeyPresses::isFirst(const GdkEvent* event) {
  const guint32 time = gdk_event_get_time(event);
  if (gdk_event_get_event_type(event) != GDK_KEY_PRESS || time == GDK_CURRENT_TIME) return true;
  const guint32 age = newest_ - time;  // almost 2^32 ms if the time is a newer one
  if (newest_ != GDK_CURRENT_TIME && age != 0 && age < kMaxAge) return false;
  if (std::exchange(newest_, time) != time) keys_.clear();
  return keys_.insert(event->key.hardware_keycode).second;
}

bool opensList(const GdkEvent* event) {
  guint key = 0;
  (void)gdk_event_get_keyval(event, &key);
  return isDeliberate(event) || key == GDK_KEY_Up || key == GDK_KEY_KP_Up || key == GDK_KEY_Down ||
         key == GDK_KEY_KP_Down;
}
