// A notifier that runs one workflow until it is notified: NotifierProgram BUS-ADDRESS READY-FILE
//
// Creates the file when it holds its slot and listens on the bus. Exits with 0 after the notification, with 1 if it
// could not start.

#include <gio/gio.h>

#include <fstream>

#include "applog/OVNSemaphoreLock.h"

int main(int argc, char** argv) {
  constexpr auto kAsClient = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                               G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  if (argc != 3) return 1;
  g_autoptr(GDBusConnection) bus =
      g_dbus_connection_new_for_address_sync(argv[1], kAsClient, nullptr, nullptr, nullptr);
  OVNSemaphoreLock slot(77445459, 255, SystemLock);
  if (bus == nullptr || !slot.AcquireLock()) return 1;

  bool notified = false;
  const auto onNotified = [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
                             gpointer flag) { *static_cast<bool*>(flag) = true; };
  g_dbus_connection_signal_subscribe(bus, nullptr, "com.orvane.orvane_application_manager.VormNotifier",
                                     "TerminateInstance_Notification",
                                     "/com/orvane/orvane_application_manager/VormNotifier", nullptr,
                                     G_DBUS_SIGNAL_FLAGS_NONE, onNotified, &notified, nullptr);
  // The bus replies in order: after this reply the subscription is active.
  g_autoptr(GVariant) answer =
      g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
                                  nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  if (answer == nullptr) return 1;
  std::ofstream(argv[2]) << "ready";

  while (!notified)
    g_main_context_iteration(nullptr, TRUE);
  return slot.releaseLock() ? 0 : 1;
}
