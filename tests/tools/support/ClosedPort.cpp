#include "tests/tools/support/ClosedPort.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tools {

// A bound socket that does not listen keeps its port and refuses connections.
ClosedPort::ClosedPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket_, generic, size) != 0 || getsockname(socket_, generic, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "a port of the loopback");
  }
  base_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

ClosedPort::~ClosedPort() {
  close(socket_);
}

}  // namespace tools
