// The test site of the window benchmark: a sign-in that redirects at once, a sign-in that fails, and a sign-in page
// that reports when it is shown.

#pragma once

#include <chrono>
#include <string>

#include "tests/tools/site/LoopbackServer.h"
#include "tests/tools/support/ClosedPort.h"

namespace bench {

class BenchSite {
 public:
  BenchSite();

  // Redirects to a page below `redirectAddress`.
  std::string redirectingAddress() const { return server_.address("/redirecting"); }

  // Redirects to a closed port.
  std::string failingAddress() const { return server_.address("/failing"); }

  // The time of the last request of `failingAddress`.
  std::chrono::steady_clock::time_point failedAt() const { return failedAt_; }

  // A form with a picture.
  std::string signInAddress() const { return server_.address("/signin"); }

  std::string redirectAddress() const { return server_.address("/done"); }
  std::string enterpriseAddress() const { return server_.address("/enterprise"); }

  // How often the sign-in page has been shown: loaded with its picture, and painted.
  int shown() const { return shown_; }

 private:
  tools::LoopbackServer server_;
  tools::ClosedPort closedPort_;
  std::chrono::steady_clock::time_point failedAt_;
  int shown_ = 0;
};

}  // namespace bench
