// Owners for what GLib and GIO hand out.

#pragma once

#include <gio/gio.h>

#include <memory>

namespace platform {

struct Unref {
  void operator()(GMainContext* context) const { g_main_context_unref(context); }
  void operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
  }
  void operator()(gchar* text) const { g_free(text); }
  void operator()(GError* error) const { g_error_free(error); }
  template <typename Object>
  void operator()(Object* object) const {
    g_object_unref(object);
  }
};
template <typename T>
using Owned = std::unique_ptr<T, Unref>;

}  // namespace platform
