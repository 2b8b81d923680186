// The site of the window's bench: a sign-in that redirects at once, one that fails, and a sign-in page that tells when
// it is shown.

#pragma once

#include <chrono>
#include <string>

#include "tests/tools/site/LoopbackServer.h"
#include "tests/tools/support/ClosedPort.h"

namespace bench {

class BenchSite {
 public:
  BenchSite();

  // Answered with a redirect to a page below `redirectAddress`.
  std::string redirectingAddress() const { return server_.address("/redirecting"); }

  // Answered with a redirect to where nobody answers.
  std::string failingAddress() const { return server_.address("/failing"); }

  // When it was last asked for.
  std::chrono::steady_clock::time_point failedAt() const { return failedAt_; }

  // A form with a picture.
  std::string signInAddress() const { return server_.address("/signin"); }

  std::string redirectAddress() const { return server_.address("/done"); }
  std::string enterpriseAddress() const { return server_.address("/enterprise"); }

  // How often the sign-in page has been shown: loaded to its last picture, and drawn with it.
  int shown() const { return shown_; }

 private:
  tools::LoopbackServer server_;
  tools::ClosedPort nobody_;
  std::chrono::steady_clock::time_point failedAt_;
  int shown_ = 0;
};

}  // namespace bench
