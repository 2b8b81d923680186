// The Kerberos realm EXAMPLE.TEST with a key distribution center on the loopback, the user "ada", and web servers.
//
// Changes the environment of this process, so that its children, and `userOf`, use the realm.

#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Environment.h"
#include "tests/tools/support/ChildProcess.h"

namespace endtoend {

class KerberosRealm {
 public:
  // Creates the realm in a new folder and starts its center. Throws std::runtime_error on failure. `hosts` have the
  // keys of web servers; `domains` are the lines of the section [domain_realm].
  KerberosRealm(const std::filesystem::path& folder, const std::vector<std::string>& hosts, const std::string& domains);

  // Gets the user a ticket that may be delegated.
  void signIn();
  void signOut();

  // Accepts a token as one of the web servers does, once. Returns the user's name, with " delegated" if the token
  // contains a ticket of the user; "" for a token that is not valid.
  //   userOf("Negotiate YII…")  => "ada@EXAMPLE.TEST"
  static std::string userOf(const std::string& authorization);

 private:
  void run(const std::string& script) const;
  bool startCenter();
  void writeFiles(int port, const std::string& domains) const;

  std::filesystem::path folder_;
  support::Variable config_;
  support::Variable profile_;
  support::Variable cache_;
  support::Variable keys_;
  support::Variable replays_;
  std::unique_ptr<tools::ChildProcess> center_;
  int port_ = 0;
};

}  // namespace endtoend
