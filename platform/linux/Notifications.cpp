#include "platform/Notifications.h"

#include <gio/gio.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>

#include "platform/linux/TimedCalls.h"

namespace platform {
namespace {

constexpr std::chrono::seconds kPatience(1);  // for each of the two buses

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

// The entries of the list of addresses by which no bus would be started.
std::string runningOnly(std::string_view addresses) {
  std::string running;
  while (!addresses.empty()) {
    const std::string_view entry = addresses.substr(0, addresses.find(';'));
    addresses.remove_prefix(std::min(entry.size() + 1, addresses.size()));
    if (entry.empty() || entry.rfind("autolaunch:", 0) == 0) continue;
    if (!running.empty()) running += ';';
    running += entry;
  }
  return running;
}

// "" when there is no such bus; a bus that would have to be started is none.
std::string sessionBus() {
  const std::string told = textOf("DBUS_SESSION_BUS_ADDRESS");
  if (!told.empty()) return runningOnly(told);
  const std::string folder = textOf("XDG_RUNTIME_DIR");
  return folder.empty() ? "" : socketAddress(folder + "/bus");
}

std::string systemBus() {
  const std::string told = textOf("DBUS_SYSTEM_BUS_ADDRESS");
  return told.empty() ? socketAddress("/run/dbus/system_bus_socket") : runningOnly(told);
}

void emit(const std::string& address, const Signal& signal) {
  constexpr auto asClient = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  TimedCalls calls(kPatience);
  g_dbus_connection_new_for_address(address.c_str(), asClient, nullptr, calls.end(), TimedCalls::keepResult, &calls);
  const Owned<GDBusConnection> bus(g_dbus_connection_new_for_address_finish(calls.result().get(), nullptr));
  if (!bus) return;
  g_dbus_connection_emit_signal(bus.get(), nullptr, signal.path.c_str(), signal.interface.c_str(),
                                signal.member.c_str(), nullptr, nullptr);
  g_dbus_connection_flush(bus.get(), calls.end(), TimedCalls::keepResult, &calls);
  g_dbus_connection_flush_finish(bus.get(), calls.result().get(), nullptr);
  g_dbus_connection_close(bus.get(), calls.end(), TimedCalls::keepResult, &calls);
  g_dbus_connection_close_finish(bus.get(), calls.result().get(), nullptr);
}

}  // namespace

void postToAllSessions(const std::string& name, const std::string& object) {
  const Signal signal = signalFor(name, object);
  if (!g_variant_is_object_path(signal.path.c_str()) || !g_dbus_is_interface_name(signal.interface.c_str()) ||
      !g_dbus_is_member_name(signal.member.c_str()))
    return;
  for (const std::string& address : {sessionBus(), systemBus()}) {
    if (!address.empty() && g_dbus_is_supported_address(address.c_str(), nullptr)) emit(address, signal);
  }
}

}  // namespace platform
