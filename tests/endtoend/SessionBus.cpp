#include "tests/endtoend/SessionBus.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace endtoend {

using platform::Owned;

namespace {

std::string settingsFor(const std::filesystem::path& folder) {
  return "<busconfig><type>session</type><auth>EXTERNAL</auth><listen>unix:path=" + (folder / "socket").string() +
         "</listen><policy context='default'><allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/>"
         "<allow own='*'/></policy></busconfig>";
}

// The daemon writes its address when it is ready, and nothing if it fails.
std::string readLine(int fd) {
  std::string line;
  char character = 0;
  while (read(fd, &character, 1) == 1 && character != '\n')
    line += character;
  return line;
}

}  // namespace

Owned<GDBusConnection> connectToBus(const std::string& address) {
  constexpr auto kAsClient = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                               G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  g_autoptr(GError) error = nullptr;
  Owned<GDBusConnection> connection(
      g_dbus_connection_new_for_address_sync(address.c_str(), kAsClient, nullptr, nullptr, &error));
  if (!connection) throw std::runtime_error(error->message);
  return connection;
}

bool SessionBus::isPossible() {
  const Owned<char, g_free> daemon(g_find_program_in_path("dbus-daemon"));
  return daemon != nullptr;
}

SessionBus::SessionBus(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "settings.xml") << settingsFor(folder);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe for the bus");
  tools::ChildProcess::Setup setup;
  setup.command = {"dbus-daemon", "--nofork", "--nopidfile", "--print-address=3",
                   "--config-file=" + (folder / "settings.xml").string()};
  setup.errorFile = "/dev/null";
  setup.fd = ends[1];
  setup.fdInChild = 3;
  daemon_ = std::make_unique<tools::ChildProcess>(setup);
  address_ = readLine(ends[0]);
  close(ends[0]);
  if (address_.empty()) throw std::runtime_error("dbus-daemon does not start");
}

}  // namespace endtoend
