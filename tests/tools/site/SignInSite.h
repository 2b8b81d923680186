// A site with an ordinary and an enterprise sign-in. Any user name and password will do.
//
// The ordinary one is a form; posting it leads to the redirect address, which ends the sign-in. The enterprise one
// begins at an address of its own that names, in "redirect_uri", the page where the organisation asks for the password;
// posting that one leads to the same redirect address.

#pragma once

#include <string>

#include "tests/tools/site/LoopbackServer.h"

namespace tools {

class SignInSite {
 public:
  SignInSite();

  // The two forms, and the prefixes of the pages that the sign-in window looks out for. The prefixes are lower-case:
  // the window lower-cases what it is given and compares it with the pages' addresses as they are.
  std::string signInAddress() const { return server_.address("/signin?state=7f3a"); }
  std::string redirectAddress() const { return server_.address("/done"); }
  std::string enterpriseAddress() const { return server_.address("/enterprise/start"); }

  // The address at which the enterprise sign-in begins: `enterpriseAddress` with the page to follow.
  std::string enterpriseStartAddress() const;

  LoopbackServer& server() { return server_; }

 private:
  Answer signIn(const Request& request) const;
  Answer enterpriseSignIn(const Request& request) const;
  Answer signedIn(const std::string& state) const;

  LoopbackServer server_;
};

}  // namespace tools
