// Owns a reference to a GObject.

#pragma once

#include <glib-object.h>

#include <memory>

namespace tools {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

template <typename T>
using Owned = std::unique_ptr<T, Unref>;

}  // namespace tools
