// Signs in with client certificates (RFC 8446, section 4.3.2): prompts for a certificate on one of the user's tokens
// and for its PIN.
//
// - The user chooses once for each origin. The choice, also that of no certificate, holds for this run.
// - A PIN is tried before the server gets the certificate: after a wrong one the user can try again or go on without a
//   certificate. WebKit's network process, which is not in the sandbox, uses the key and needs the PIN again.
// - A PIN is kept in memory until the end of the run and overwritten then. WebKit does not overwrite its copies.
// - Nothing of a token is loaded into this process, nor before a server asks.
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/gtk/Prompts.h"
#include "app/gtk/page/RequestLimit.h"
#include "app/gtk/tokens/Tokens.h"

class Certificates {
 public:
  using Show = std::function<Prompts::Id(Prompt, std::function<void(const PromptReply&)>)>;
  using Cancel = std::function<void(Prompts::Id)>;

  // `show` and `cancel` show and remove a prompt. `limit` counts the prompts that follow no choice of the user, and
  // must outlive this object.
  Certificates(Show show, Cancel cancel, RequestLimit& limit);
  ~Certificates();

  Certificates(const Certificates&) = delete;
  Certificates& operator=(const Certificates&) = delete;

  // Replies to a server's request for a certificate, after a prompt unless the user has chosen before.
  void choose(WebKitAuthenticationRequest* request);

  // Replies to the network process's request for the PIN of a chosen certificate.
  void unlock(WebKitAuthenticationRequest* request);

  // Another page has been committed: declines the requests that are still open, which is not a choice.
  void declineAll();

 private:
  struct Origin;

  void ask(Origin& origin, const std::string& warning);
  void onListed(Origin& origin, const std::string& warning, std::vector<TokenCertificate> certificates);
  void askPin(Origin& origin, const std::string& warning);
  void open(Origin& origin, const std::string& pin);
  void onOpened(Origin& origin, Opening opening);
  void show(Origin& origin, Prompt prompt, std::function<void(const PromptReply&)> onAccepted);
  void decide(Origin& origin, bool withCertificate);
  void reply(Origin& origin);
  static void onCancelled(WebKitAuthenticationRequest* request, Certificates* self);

  Show show_;
  Cancel cancel_;
  RequestLimit& limit_;
  std::map<std::string, std::unique_ptr<Origin>> origins_;
};
