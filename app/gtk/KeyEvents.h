// Key events of GDK, told in the terms of `WindowKeys`, and the few keys that are the window's own.

#pragma once

#include <gdk/gdk.h>

#include <optional>
#include <string>

// The characters of a key without its modifiers, UTF-8, as `decideKey` takes them; missing for a key that has none. On
// a layout that writes another script a letter key gives the Latin letter of the person's first layout that has one,
// which is what its shortcut is known by.
std::optional<std::string> charactersOf(const GdkEventKey& event);

// The modifiers as `KeyModifier` bits. The platform's primary accelerator (Control here) is the Command bit, Alt the
// Option bit, Super, Hyper and Meta the Control bit; Num Lock and the mouse buttons do not count.
unsigned long modifiersOf(const GdkEventKey& event);

// What the window does itself, whatever the page would do with the key: a page must not be able to keep it open.
//   Ctrl+W, Alt+F4  => kClose        Ctrl++, Ctrl+=  => kZoomIn        Ctrl+-  => kZoomOut        Ctrl+0  => kZoomReset
enum class WindowCommand { kClose, kZoomIn, kZoomOut, kZoomReset };

std::optional<WindowCommand> windowCommandOf(const GdkEventKey& event);
