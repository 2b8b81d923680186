// The client certificates on the user's tokens: smart cards, key stores, everything that p11-kit knows.
//
// - Each call runs the program svo-signin-tokens, which loads the token modules. A module that crashes or
//   blocks does not affect this process.
// - One call at a time. A call is cancelled by the next one, by `cancel` and by the destructor, without a result.
// - A program that does not end in time is killed: after 20 seconds for `list`, after 2 minutes for `open`.
// Main thread.

#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/gtk/Glib.h"
#include "app/gtk/tokens/Protocol.h"

struct TokenCertificate {
  std::string name;    // of the owner
  std::string issuer;  // its name
  std::string token;   // its label
  std::int64_t expiry = 0;
  std::string pem;
  std::string key;  // the PKCS #11 address of the private key (RFC 7512)
  Login login = Login::kNone;
};

class Tokens {
 public:
  Tokens() = default;
  ~Tokens() { cancel(); }

  Tokens(const Tokens&) = delete;
  Tokens& operator=(const Tokens&) = delete;

  // Reports the certificates that may identify a client. Failures report none.
  void list(std::function<void(std::vector<TokenCertificate>)> onListed);

  // Reports whether a private key can be used with this PIN, which has at most kMaxPin bytes.
  void open(const std::string& key, const std::string& pin, std::function<void(Opening)> onOpened);

  // Ends the call in progress and its program.
  void cancel();

 private:
  using OnEnded = std::function<void(int status, const std::string& output)>;  // -1: it has no exit status

  void run(const char* command, const std::string& key, const std::string& input, guint timeoutSeconds,
           OnEnded onEnded);
  void end(int status, const std::string& output);
  static void onEnd(GObject* process, GAsyncResult* result, gpointer self);
  static gboolean onTimeout(gpointer self);

  Owned<GSubprocess> process_;
  Owned<GCancellable> cancellable_;
  guint timeout_ = 0;
  OnEnded onEnded_;
};
