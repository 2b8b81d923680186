// Converts strings from GLib, and names the owner of GLib handles.

#pragma once

#include <glib.h>

#include <string>

#include "platform/Text.h"
#include "platform/linux/Glib.h"

using platform::orEmpty;
using platform::Owned;

// Replaces every byte that is not UTF-8 by U+FFFD.
inline std::string validUtf8(const std::string& text) {
  return Owned<char, g_free>(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}
