// The prompts of a page: script dialogs, name and password of HTTP authentication (RFC 9110, section 11), and client
// certificates.
//
// - Each prompt names the site.
// - A frame of another origin gets no prompt: its dialogs and its servers' requests for a password or a
//   certificate are declined. A proxy's request for a password is always shown.
// - A page may show five prompts without user input. Further dialogs are declined.
// - A dialog that a page shows before it is left is confirmed without a prompt.
// - Names and passwords are kept in memory for this run.
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include <deque>
#include <functional>
#include <memory>

#include "app/gtk/Prompts.h"
#include "app/gtk/page/Certificates.h"
#include "app/gtk/page/DialogMark.h"
#include "app/gtk/page/MainFrame.h"
#include "app/gtk/page/RequestLimit.h"
#include "app/gtk/page/Site.h"

class PagePrompts {
 public:
  // Shows prompts in `overlay` over `page`; both must outlive this object. `content` belongs to `page`. Calls `onShown`
  // with true for each prompt requested, and with false when it has been closed.
  PagePrompts(GtkOverlay* overlay, GtkWidget* page, WebKitUserContentManager* content,
              std::function<void(bool shown)> onShown);

  ~PagePrompts();

  PagePrompts(const PagePrompts&) = delete;
  PagePrompts& operator=(const PagePrompts&) = delete;

  // `site` is the site of the page that is shown.
  void showDialog(WebKitScriptDialog* dialog, const Site& site);

  // `mainFrame` must outlive this object. A request that is not for the main frame is declined half a second later: the
  // page process reports what the main frame requests, and another process reports the request for a password.
  void authenticate(WebKitAuthenticationRequest* request, const MainFrame& mainFrame);

  // The server has responded with another page, which WebKit has not committed yet.
  void pageResponded() { mark_.renew(); }

  // Shows a prompt of the page or queues it. Calls `onReply` once, unless the prompt is cancelled first.
  Prompts::Id show(Prompt prompt, std::function<void(const PromptReply&)> onReply);

  // As `show`, but before those that wait, and in the place of the one that is shown, which then waits.
  Prompts::Id showFirst(Prompt prompt, std::function<void(const PromptReply&)> onReply);

  // Shows another prompt in the place of `id`. Returns false if that one already has a reply.
  bool replace(Prompts::Id id, Prompt prompt, std::function<void(const PromptReply&)> onReply);

  // Removes a prompt without a reply.
  void cancel(Prompts::Id id);

  // Whether a prompt is shown.
  bool isShown() const { return prompts_.isShown(); }

  // Another page has been committed: declines every prompt. WebKit cancels the requests of the main frame, but not
  // those of sub-frames and images.
  void pageCommitted();

  // Removes every prompt without a reply.
  void close() { prompts_.close(); }

  // The user has clicked or pressed a key.
  void resetLimit() { limit_.reset(); }

 private:
  using RequestRef = std::shared_ptr<WebKitAuthenticationRequest>;

  struct Undecided {
    RequestRef request;
    const MainFrame* mainFrame;
    guint source;
  };

  static gboolean onDelayOver(gpointer self);
  static void onUndecidedCancelled(WebKitAuthenticationRequest* request, PagePrompts* self);
  void showOrDecline(const RequestRef& request, bool isForUser);
  static void onCancelled(WebKitAuthenticationRequest* request, PagePrompts* self);
  std::function<void(const PromptReply&)> reporting(std::function<void(const PromptReply&)> onReply);

  Prompts prompts_;
  DialogMark mark_;
  RequestLimit limit_{5};
  std::deque<Undecided> undecided_;  // in the order of their arrival
  std::function<void(bool)> onShown_;
  Certificates certificates_;
};
