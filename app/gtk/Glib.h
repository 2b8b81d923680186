// Owners of GLib handles, and conversions of strings from and to GLib.

#pragma once

#include <glib-object.h>

#include <memory>
#include <string>

template <auto release>
struct Releaser {
  template <typename T>
  void operator()(T* handle) const {
    release(handle);
  }
};

// Owns one reference to a handle, or the handle itself; `release` gives it back.
//   Owned<WebKitSettings>
//   Owned<char, g_free>
template <typename T, auto release = g_object_unref>
using Owned = std::unique_ptr<T, Releaser<release>>;

// Null => ""
inline std::string orEmpty(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

// Replaces every byte that is not UTF-8 by U+FFFD.
inline std::string validUtf8(const std::string& text) {
  return Owned<char, g_free>(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}
