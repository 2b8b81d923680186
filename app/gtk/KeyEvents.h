// Converts GDK key events to the terms of `WindowKeys`, and recognizes the window's own shortcuts and the
// presses that act on the page.

#pragma once

#include <gdk/gdk.h>

#include <optional>
#include <set>
#include <string>

// Returns the characters of a key without its modifiers, UTF-8, as `decideKey` takes them; missing if it has none. On a
// layout of another script a letter key returns the Latin letter of the user's first layout that has one.
std::optional<std::string> charactersOf(const GdkEventKey& event);

// Returns the modifiers as `KeyModifier` bits. The primary accelerator (Control) is the Command bit, Alt the Option
// bit, Super, Hyper and Meta the Control bit. Num Lock and mouse buttons are ignored.
unsigned long modifiersOf(const GdkEventKey& event);

// Commands of the window itself. The page does not get their keys, so it cannot keep the window open.
//   Ctrl+W, Alt+F4  => kClose        Ctrl++, Ctrl+=  => kZoomIn        Ctrl+-  => kZoomOut        Ctrl+0  => kZoomReset
enum class WindowCommand { kClose, kZoomIn, kZoomOut, kZoomReset };

std::optional<WindowCommand> windowCommandOf(const GdkEventKey& event);

// Whether WebKit copies or cuts when the page does not use the key.
//   Ctrl+C, Ctrl+X, Ctrl+Insert, Shift+Delete  => true
bool copies(const GdkEventKey& event);

// Whether a press of a key, mouse button or finger acts on the page: a click, the end of a touch, or a key that presses
// a button (HTML, section 6.4.1, "activation triggering input event"). Other keys do not count: a page could wait for
// the user to type.
//   a click, Return, Space  => true
//   a finger that moves     => false
bool isDeliberate(const GdkEvent* event);

// Recognizes key presses that are delivered again: WebKit hands each one that the page has not used back to GTK, after
// any time that the page wants.
class KeyPresses {
 public:
  // Whether `event` is delivered for the first time. Events other than key presses always are. Call once for each.
  bool isFirst(const GdkEvent* event);

 private:
  guint32 newest_ = GDK_CURRENT_TIME;  // the time of the newest presses
  std::set<guint16> keys_;             // theirs
};

// Whether the press may open the list of a select field.
//   a click, Return, Space, Up, Down  => true
bool opensList(const GdkEvent* event);
