// An object of GLib's object system that is given back when its owner goes.

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
