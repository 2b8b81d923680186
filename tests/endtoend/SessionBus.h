// A D-Bus session bus of the test's own, on which nothing can be started that the test does not start.

#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "tests/tools/support/ChildProcess.h"
#include "tests/tools/support/Owned.h"

namespace endtoend {

// A connection to a message bus, whose messages are handled by the default main context.
// Throws std::runtime_error when there is no bus at the address.
tools::Owned<GDBusConnection> connectToBus(const std::string& address);

class SessionBus {
 public:
  // Whether this system has the programs for it.
  static bool isPossible();

  // Returns once the bus takes connections; its files lie in `folder`. Throws std::runtime_error when that does not
  // come.
  explicit SessionBus(const std::filesystem::path& folder);

  const std::string& address() const { return address_; }

  // What tells a program to use this bus.
  std::map<std::string, std::string> environment() const { return {{"DBUS_SESSION_BUS_ADDRESS", address_}}; }

 private:
  std::string address_;
  std::unique_ptr<tools::ChildProcess> daemon_;
};

}  // namespace endtoend
