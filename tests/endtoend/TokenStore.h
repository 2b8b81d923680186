// Tokens with client certificates, in software (SoftHSM). Needs the commands softhsm2-util and p11tool.
//
//   options.environment.merge(tokens.environment());
//   tokens.add("Card", "1234");
//   tokens.store("Card", "1234", file);

#pragma once

#include <glib.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/UniqueFd.h"

namespace endtoend {

class TokenStore {
 public:
  // Whether this system has the commands.
  static bool isPossible();

  // Stores the tokens below `folder`, which it creates.
  explicit TokenStore(const std::filesystem::path& folder);
  ~TokenStore();

  TokenStore(const TokenStore&) = delete;
  TokenStore& operator=(const TokenStore&) = delete;

  // The environment of a program that finds these tokens and no others.
  std::map<std::string, std::string> environment() const;

  // Each throws std::runtime_error on failure.
  void add(const std::string& label, const std::string& pin) const;

  // Stores the certificate (PEM) in `file` and the key in "<file>.key" on a token.
  void store(const std::string& label, const std::string& pin, const std::filesystem::path& file) const;

  // As if the user pulled out every token.
  void removeAll() const;

  // From now on a process that loads the module blocks in it.
  void block();

  // Whether a process has loaded the module since. That is an event of the default main context.
  bool hasBlocked() const { return hasBlocked_; }

 private:
  void run(const std::vector<std::string>& command) const;
  static gboolean onOpened(gint, GIOCondition, gpointer self);

  std::filesystem::path folder_;
  platform::UniqueFd pipe_;    // in place of the module's configuration
  platform::UniqueFd opened_;  // an inotify instance
  guint source_ = 0;
  bool hasBlocked_ = false;
};

}  // namespace endtoend
