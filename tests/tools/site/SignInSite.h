// A site with an ordinary and an enterprise sign-in. Accepts every user name and password.
//
// - The ordinary sign-in is a form. Posting it redirects to the redirect address, which ends the sign-in.
// - The enterprise sign-in starts at its own address, whose "redirect_uri" is the organization's form. Posting it
//   redirects to the same redirect address.

#pragma once

#include <string>

#include "tests/tools/site/LoopbackServer.h"

namespace tools {

class SignInSite {
 public:
  SignInSite();

  // The addresses for the sign-in window's options. The prefixes are lower-case: the window lower-cases its options,
  // but not the pages' addresses.
  std::string signInAddress() const { return server_.address("/signin?state=7f3a"); }
  std::string redirectAddress() const { return server_.address("/done"); }
  std::string enterpriseAddress() const { return server_.address("/enterprise/start"); }

  // The start of the enterprise sign-in: `enterpriseAddress` with "redirect_uri".
  std::string enterpriseStartAddress() const;

  LoopbackServer& server() { return server_; }

 private:
  Response signIn(const Request& request) const;
  Response enterpriseSignIn(const Request& request) const;
  Response signedIn(const std::string& state) const;

  LoopbackServer server_;
};

}  // namespace tools
