// Owner of handles of GLib and other C libraries.

#pragma once

#include <glib-object.h>

#include <memory>

namespace platform {

template <auto release>
struct Releaser {
  template <typename T>
  void operator()(T* handle) const {
    release(handle);
  }
};

// Owns one reference to a handle, or the handle itself; `release` gives it back.
//   Owned<GCancellable>
//   Owned<char, g_free>
template <typename T, auto release = g_object_unref>
using Owned = std::unique_ptr<T, Releaser<release>>;

}  // namespace platform
