// A notifier that runs one workflow until it is told to end: NotifierProgram BUS-ADDRESS READY-FILE
//
// Makes the file once it holds its slot and hears the bus. Ends with 0 after the notification, 1 when it could not
// begin.

#include <gio/gio.h>

#include <fstream>

#include "applog/OVNSemaphoreLock.h"

int main(int argc, char** argv) {
  constexpr auto asClient = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  if (argc != 3) return 1;
  g_autoptr(GDBusConnection) bus = g_dbus_connection_new_for_address_sync(argv[1], asClient, nullptr, nullptr, nullptr);
  OVNSemaphoreLock slot(77445459, 255, SystemLock);
  if (bus == nullptr || !slot.AcquireLock()) return 1;

  bool told = false;
  const auto tell = [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
                       gpointer flag) { *static_cast<bool*>(flag) = true; };
  g_dbus_connection_signal_subscribe(
      bus, nullptr, "com.orvane.orvane_application_manager.VormNotifier", "TerminateInstance_Notification",
      "/com/orvane/orvane_application_manager/VormNotifier", nullptr, G_DBUS_SIGNAL_FLAGS_NONE, tell, &told, nullptr);
  // The bus answers in order: once it has, it knows of the subscription.
  g_autoptr(GVariant) answer =
      g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
                                  nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  if (answer == nullptr) return 1;
  std::ofstream(argv[2]) << "ready";

  while (!told)
    g_main_context_iteration(nullptr, TRUE);
  return slot.releaseLock() ? 0 : 1;
}
