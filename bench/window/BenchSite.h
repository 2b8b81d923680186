// The site of the window's bench: a sign-in that redirects at once, and a sign-in page that tells when it is shown.

#pragma once

#include <string>

#include "examples/signin-site/LoopbackServer.h"

namespace bench {

class BenchSite {
 public:
  BenchSite();

  // Answered with a redirect to a page below `redirectAddress`.
  std::string redirectingAddress() const { return server_.address("/redirecting"); }

  // A form with a picture.
  std::string signInAddress() const { return server_.address("/signin"); }

  std::string redirectAddress() const { return server_.address("/done"); }
  std::string enterpriseAddress() const { return server_.address("/enterprise"); }

  // How often the sign-in page has been shown: loaded to its last picture, and drawn with it.
  int shown() const { return shown_; }

 private:
  examples::LoopbackServer server_;
  int shown_ = 0;
};

}  // namespace bench
