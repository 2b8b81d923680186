// A loopback port that refuses every connection. No other process can bind it while this object exists.

#pragma once

#include <string>

namespace tools {

class ClosedPort {
 public:
  // Throws std::system_error if no port is free.
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
