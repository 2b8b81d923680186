// Gives pages `navigator.credentials` for security keys (W3C Web Authentication, Level 2): decides who may use a key,
// prompts, and runs the ceremony.
//
// - Two scripts run in the main frame of every page. credentials.js, in the page's world, provides the interface. The
//   other, in a world that no page can reach, passes requests on with the origin of its document. A frame of another
//   origin reaches neither.
// - A request is refused unless its origin is the origin of the committed page, over TLS or from this machine, and no
//   navigation is in progress. Of a process that lies about both, the prompt shows what it claims to be, as the strip
//   does.
// - The page may only name a relying party that its host belongs to (`mayUse`). The client data come from this program.
// - A ceremony needs a click, Return or Space on the page in the last five seconds. Each permits one. None begins while
//   another runs or a prompt is shown.
// - A navigation, the end of the page's process and the end of this object end the ceremony. The reply reaches only the
//   document that has asked.
// - The log says that a ceremony began and how it ended. No PIN, challenge, credential or signature is logged or kept.
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/gtk/keys/SecurityKeys.h"
#include "app/gtk/page/CredentialRequest.h"
#include "app/gtk/page/FreshPress.h"
#include "app/gtk/page/PagePrompts.h"
#include "app/gtk/page/Site.h"

class Credentials {
 public:
  // Adds the scripts to `content`. Call before the first page is loaded. Both must outlive this object.
  Credentials(WebKitUserContentManager* content, PagePrompts& prompts);
  ~Credentials();

  Credentials(const Credentials&) = delete;
  Credentials& operator=(const Credentials&) = delete;

  // A navigation of the main frame has started.
  void navigationStarted();

  // It has failed: the page stays.
  void navigationFailed() { isLeaving_ = false; }

  // The page at `address` is shown.
  void committed(const std::string& address, const Site& site);

  // The process of the page has ended.
  void processEnded();

  // The user has clicked the page or pressed Return or Space.
  void pressed(std::int64_t now) { press_.pressed(now); }

 private:
  class Reply;
  struct Ceremony;

  static gboolean onMessage(WebKitUserContentManager*, JSCValue* message, WebKitScriptMessageReply* reply,
                            Credentials* self);
  void receive(const std::string& origin, const std::string& text, Reply reply);
  std::string reasonToRefuse(const std::string& origin, const CredentialRequest& request);
  void begin(Reply reply, CredentialRequest request);
  SecurityKeys::Events events();
  void showStep(const std::string& step);
  void askPin(std::optional<int> triesLeft, bool isWrong);
  void askAccount(const std::vector<KeyAccount>& accounts);
  void show(Prompt prompt, std::function<void(const PromptReply&)> onAccepted);
  void fail(const std::string& error);
  void end(const std::string& outcome, const std::string& reply);

  WebKitUserContentManager* content_;
  PagePrompts& prompts_;
  FreshPress press_;
  std::string origin_;  // of the committed page; empty if it may use no security key
  Site site_;
  bool isLeaving_ = false;
  std::unique_ptr<Ceremony> ceremony_;
  SecurityKeys keys_;
};
