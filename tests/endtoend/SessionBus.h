// A D-Bus session bus of the test's own. No services can be activated on it.

#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "platform/linux/Glib.h"
#include "tests/tools/support/ChildProcess.h"

namespace endtoend {

// Connects to a message bus. The default main context handles its messages. Throws std::runtime_error if there is no
// bus at the address.
platform::Owned<GDBusConnection> connectToBus(const std::string& address);

class SessionBus {
 public:
  // Whether this system has the required programs.
  static bool isPossible();

  // Returns when the bus accepts connections. Its files are in `folder`. Throws std::runtime_error if it does not
  // start.
  explicit SessionBus(const std::filesystem::path& folder);

  const std::string& address() const { return address_; }

  // The environment of a program that uses this bus.
  std::map<std::string, std::string> environment() const { return {{"DBUS_SESSION_BUS_ADDRESS", address_}}; }

 private:
  std::string address_;
  std::unique_ptr<tools::ChildProcess> daemon_;
};

}  // namespace endtoend
