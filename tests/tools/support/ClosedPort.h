// A port of the loopback that refuses every connection, and that nobody else can get while this object lives.

#pragma once

#include <string>

namespace tools {

class ClosedPort {
 public:
  // Throws std::system_error when the system has no port left.
  ClosedPort();
  ~ClosedPort();

  ClosedPort(const ClosedPort&) = delete;
  ClosedPort& operator=(const ClosedPort&) = delete;

  //   address("/signin")  => "http://127.0.0.1:40123/signin"
  std::string address(const std::string& target = "") const { return base_ + target; }

 private:
  int socket_;
  std::string base_;
};

}  // namespace tools
