// Converts strings from and to GLib, and names the owner of GLib handles.

#pragma once

#include <glib.h>

#include <string>

#include "platform/linux/Glib.h"

using platform::Owned;

// Null => ""
inline std::string orEmpty(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

// Replaces every byte that is not UTF-8 by U+FFFD.
inline std::string validUtf8(const std::string& text) {
  return Owned<char, g_free>(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}
