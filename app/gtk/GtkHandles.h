// Owners for the handles of GTK and GLib.

#pragma once

#include <glib-object.h>

#include <memory>

struct UnrefObject {
  void operator()(gpointer object) const { g_object_unref(object); }
};

// One reference to a GObject.
template <typename T>
using ObjectRef = std::unique_ptr<T, UnrefObject>;
