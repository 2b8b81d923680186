// Owners for the handles of GTK and GLib, and texts as they take them.

#pragma once

#include <glib-object.h>

#include <memory>
#include <string>

struct UnrefObject {
  void operator()(gpointer object) const { g_object_unref(object); }
};

// One reference to a GObject.
template <typename T>
using ObjectRef = std::unique_ptr<T, UnrefObject>;

// The text with every byte that is no UTF-8 replaced by U+FFFD.
inline std::string validUtf8(const std::string& text) {
  const std::unique_ptr<char, void (*)(gpointer)> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
  return valid.get();
}
