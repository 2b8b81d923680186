#include "platform/Notifications.h"

#include <gio/gio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace platform {
namespace {

constexpr guint kPatience = 2;  // seconds for all buses together

struct Unref {
  void operator()(GMainContext* context) const { g_main_context_unref(context); }
  void operator()(GDBusConnection* bus) const { g_object_unref(bus); }
  void operator()(GCancellable* end) const { g_object_unref(end); }
  void operator()(GAsyncResult* result) const { g_object_unref(result); }
  void operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
  }
  void operator()(gchar* text) const { g_free(text); }
};
template <typename T>
using Owned = std::unique_ptr<T, Unref>;

struct Signal {
  std::string path;
  std::string interface;
  std::string member;
};

Signal signalFor(const std::string& name, const std::string& object) {
  std::string path = "/" + object;
  std::replace(path.begin(), path.end(), '.', '/');
  return {path, object, name.substr(name.rfind('.') + 1)};
}

std::string textOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

std::string socketAddress(const std::string& path) {
  if (::access(path.c_str(), F_OK) != 0) return "";
  const Owned<gchar> escaped(g_dbus_address_escape_value(path.c_str()));
  return std::string("unix:path=") + escaped.get();
}

// "" when there is no such bus; a bus that would have to be started is none.
std::string sessionBus() {
  const std::string told = textOf("DBUS_SESSION_BUS_ADDRESS");
  if (!told.empty()) return told.rfind("autolaunch:", 0) == 0 ? "" : told;
  const std::string folder = textOf("XDG_RUNTIME_DIR");
  return folder.empty() ? "" : socketAddress(folder + "/bus");
}

std::string systemBus() {
  const std::string told = textOf("DBUS_SYSTEM_BUS_ADDRESS");
  return told.empty() ? socketAddress("/run/dbus/system_bus_socket") : told;
}

// Runs calls one after the other in a context of their own, so that no event of the caller's is served meanwhile.
class Calls {
 public:
  Calls() : context_(g_main_context_new()), end_(g_cancellable_new()) {
    g_main_context_push_thread_default(context_.get());
    timer_.reset(g_timeout_source_new_seconds(kPatience));
    g_source_set_callback(timer_.get(), giveUp, end_.get(), nullptr);
    g_source_attach(timer_.get(), context_.get());
  }
  Calls(const Calls&) = delete;
  Calls& operator=(const Calls&) = delete;
  ~Calls() { g_main_context_pop_thread_default(context_.get()); }

  Owned<GDBusConnection> connectTo(const std::string& address) {
    constexpr auto asClient = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    g_dbus_connection_new_for_address(address.c_str(), asClient, nullptr, end_.get(), keepResult, this);
    return Owned<GDBusConnection>(g_dbus_connection_new_for_address_finish(result().get(), nullptr));
  }

  void emit(GDBusConnection* bus, const Signal& signal) {
    g_dbus_connection_emit_signal(bus, nullptr, signal.path.c_str(), signal.interface.c_str(), signal.member.c_str(),
                                  nullptr, nullptr);
    g_dbus_connection_flush(bus, end_.get(), keepResult, this);
    g_dbus_connection_flush_finish(bus, result().get(), nullptr);
    g_dbus_connection_close(bus, end_.get(), keepResult, this);
    g_dbus_connection_close_finish(bus, result().get(), nullptr);
  }

 private:
  static gboolean giveUp(gpointer end) {
    g_cancellable_cancel(static_cast<GCancellable*>(end));
    return G_SOURCE_REMOVE;
  }
  static void keepResult(GObject*, GAsyncResult* result, gpointer self) {
    static_cast<Calls*>(self)->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
  }
  Owned<GAsyncResult> result() {
    while (!result_)
      g_main_context_iteration(context_.get(), TRUE);
    return std::move(result_);
  }

  const Owned<GMainContext> context_;
  const Owned<GCancellable> end_;
  Owned<GSource> timer_;
  Owned<GAsyncResult> result_;
};

}  // namespace

void postToAllSessions(const std::string& name, const std::string& object) {
  const Signal signal = signalFor(name, object);
  if (!g_variant_is_object_path(signal.path.c_str()) || !g_dbus_is_interface_name(signal.interface.c_str()) ||
      !g_dbus_is_member_name(signal.member.c_str()))
    return;
  Calls calls;
  for (const std::string& address : {sessionBus(), systemBus()}) {
    if (address.empty() || !g_dbus_is_supported_address(address.c_str(), nullptr)) continue;
    const Owned<GDBusConnection> bus = calls.connectTo(address);
    if (bus) calls.emit(bus.get(), signal);
  }
}

}  // namespace platform
