#include "app/gtk/page/PagePrompts.h"

#include <string.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/gtk/Glib.h"
#include "app/gtk/Language.h"

namespace {

// In bytes. A text field of GTK holds fewer characters, a label of a prompt far fewer.
constexpr std::size_t kMaxTextLength = 256 << 10;

// Shared, because `std::function` copies what the reply captures.
using DialogRef = std::shared_ptr<WebKitScriptDialog>;

constexpr char kPromptId[] = "svo-prompt";
constexpr guint kReportDelayMilliseconds = 500;

std::string textOf(const char* text) {
  return text == nullptr ? std::string() : validUtf8(std::string(text, ::strnlen(text, kMaxTextLength)));
}

std::string headingFor(const Site& site) {
  if (!site.host.empty()) return displayed(_("%1 says:"), {inPrompt(site.host)});
  return site.kind == Site::Kind::kFile ? _("A page on this computer says:")
                                        : _("A page that does not say whose it is says:");
}

Prompt promptFor(WebKitScriptDialog* dialog, const std::string& message, const Site& site) {
  Prompt prompt;
  prompt.heading = headingFor(site);
  prompt.message = message;
  const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(dialog);
  prompt.canBeDeclined = type != WEBKIT_SCRIPT_DIALOG_ALERT;
  if (type == WEBKIT_SCRIPT_DIALOG_PROMPT) {
    prompt.fields.push_back({"", textOf(webkit_script_dialog_prompt_get_default_text(dialog)), false});
  }
  return prompt;
}

void sendReply(WebKitScriptDialog* dialog, const PromptReply& reply) {
  const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(dialog);
  if (type == WEBKIT_SCRIPT_DIALOG_CONFIRM) webkit_script_dialog_confirm_set_confirmed(dialog, reply.accepted);
  if (type == WEBKIT_SCRIPT_DIALOG_PROMPT && reply.accepted) {
    webkit_script_dialog_prompt_set_text(dialog, reply.values.front().c_str());
  }
  webkit_script_dialog_close(dialog);
}

bool isCertificateRequest(WebKitAuthenticationRequest* request) {
  return webkit_authentication_request_get_scheme(request) == WEBKIT_AUTHENTICATION_SCHEME_CLIENT_CERTIFICATE_REQUESTED;
}

bool isPasswordRequest(WebKitAuthenticationRequest* request) {
  switch (webkit_authentication_request_get_scheme(request)) {
    case WEBKIT_AUTHENTICATION_SCHEME_DEFAULT:
    case WEBKIT_AUTHENTICATION_SCHEME_HTTP_BASIC:
    case WEBKIT_AUTHENTICATION_SCHEME_HTTP_DIGEST:
    case WEBKIT_AUTHENTICATION_SCHEME_NTLM:
    case WEBKIT_AUTHENTICATION_SCHEME_NEGOTIATE:
      return true;
    default:
      return false;
  }
}

using Origin = Owned<WebKitSecurityOrigin, webkit_security_origin_unref>;

Origin originOf(WebKitAuthenticationRequest* request) {
  return Origin(webkit_authentication_request_get_security_origin(request));
}

bool isEncrypted(WebKitAuthenticationRequest* request) {
  return g_strcmp0(webkit_security_origin_get_protocol(originOf(request).get()), "https") == 0;
}

bool isForUser(WebKitAuthenticationRequest* request, const MainFrame& mainFrame) {
  const bool isForProxy = webkit_authentication_request_is_for_proxy(request) && !isCertificateRequest(request);
  return isForProxy || mainFrame.isAt(originOf(request).get());
}

Prompt promptFor(WebKitAuthenticationRequest* request) {
  const bool isProxy = webkit_authentication_request_is_for_proxy(request);
  const std::string host = bracketed(textOf(webkit_authentication_request_get_host(request)));
  const std::string realm = textOf(webkit_authentication_request_get_realm(request));

  Prompt prompt;
  prompt.heading =
      displayed(isProxy ? _("The proxy %1 asks for your name and password") : _("%1 asks for your name and password"),
                {inPrompt(displayHost(host))});
  if (!realm.empty()) prompt.message = displayed(_("It says: \u201C%1\u201D"), {realm});
  if (webkit_authentication_request_is_retry(request)) prompt.warning = _("That name or password was not right.");
  const std::string address =
      "http://" + host + ":" + std::to_string(webkit_authentication_request_get_port(request)) + "/";
  const Site::Kind kind = siteOf(address, isEncrypted(request)).kind;
  if (!isProxy && kind != Site::Kind::kEncrypted && kind != Site::Kind::kLoopback) {
    prompt.warning += std::string(prompt.warning.empty() ? "" : " ") +
                      _("The connection is not encrypted: others can read what you type.");
  }
  prompt.fields = {{_("Name"), "", false}, {_("Password"), "", true}};
  return prompt;
}

void sendReply(WebKitAuthenticationRequest* request, const PromptReply& reply) {
  if (!reply.accepted) return webkit_authentication_request_authenticate(request, nullptr);
  const Owned<WebKitCredential, webkit_credential_free> credential(webkit_credential_new(
      reply.values[0].c_str(), reply.values[1].c_str(), WEBKIT_CREDENTIAL_PERSISTENCE_FOR_SESSION));
  webkit_authentication_request_authenticate(request, credential.get());
}

}  // namespace

PagePrompts::PagePrompts(GtkOverlay* overlay, GtkWidget* page, WebKitUserContentManager* content,
                         std::function<void(bool)> onShown)
    : prompts_(overlay, page),
      mark_(content),
      onShown_(std::move(onShown)),
      certificates_(
          [this](Prompt prompt, std::function<void(const PromptReply&)> onReply) {
            return show(std::move(prompt), std::move(onReply));
          },
          [this](Prompts::Id id) { cancel(id); }, limit_) {}

void PagePrompts::showDialog(WebKitScriptDialog* dialog, const Site& site) {
  if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
    return webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
  }
  const std::optional<std::string> message = mark_.unmarked(textOf(webkit_script_dialog_get_message(dialog)));
  if (!message || !limit_.take()) return;

  const DialogRef kept(webkit_script_dialog_ref(dialog), webkit_script_dialog_unref);
  (void)show(promptFor(dialog, *message, site), [kept](const PromptReply& reply) { sendReply(kept.get(), reply); });
}

PagePrompts::~PagePrompts() {
  for (const Undecided& each : undecided_) {
    g_signal_handlers_disconnect_by_data(each.request.get(), this);
    g_source_remove(each.source);
  }
}

void PagePrompts::pageCommitted() {
  mark_.committed();
  certificates_.declineAll();
  prompts_.declineAll();
}

void PagePrompts::authenticate(WebKitAuthenticationRequest* request, const MainFrame& mainFrame) {
  const RequestRef kept(WEBKIT_AUTHENTICATION_REQUEST(g_object_ref(request)), g_object_unref);
  if (webkit_authentication_request_get_scheme(request) ==
      WEBKIT_AUTHENTICATION_SCHEME_CLIENT_CERTIFICATE_PIN_REQUESTED) {
    return certificates_.unlock(request);
  }
  const bool isKnown = isPasswordRequest(request) || isCertificateRequest(request);
  if (!isKnown || isForUser(request, mainFrame)) return showOrDecline(kept, isKnown);
  undecided_.push_back({kept, &mainFrame, g_timeout_add(kReportDelayMilliseconds, onDelayOver, this)});
  g_signal_connect(request, "cancelled", G_CALLBACK(onUndecidedCancelled), this);
}

// All delays have the same length, so the first request is the one whose delay is over.
gboolean PagePrompts::onDelayOver(gpointer self) {
  auto* const prompts = static_cast<PagePrompts*>(self);
  const Undecided first = std::move(prompts->undecided_.front());
  prompts->undecided_.pop_front();
  g_signal_handlers_disconnect_by_data(first.request.get(), self);
  prompts->showOrDecline(first.request, isForUser(first.request.get(), *first.mainFrame));
  return G_SOURCE_REMOVE;
}

void PagePrompts::onUndecidedCancelled(WebKitAuthenticationRequest* request, PagePrompts* self) {
  const auto found = std::find_if(self->undecided_.begin(), self->undecided_.end(),
                                  [request](const Undecided& each) { return each.request.get() == request; });
  g_source_remove(found->source);
  self->undecided_.erase(found);
}

void PagePrompts::showOrDecline(const RequestRef& request, bool isForUser) {
  if (isForUser && isCertificateRequest(request.get())) return certificates_.choose(request.get());
  if (!isForUser || !limit_.take()) return webkit_authentication_request_authenticate(request.get(), nullptr);
  const Prompts::Id id =
      show(promptFor(request.get()), [request](const PromptReply& reply) { sendReply(request.get(), reply); });

  g_object_set_data(G_OBJECT(request.get()), kPromptId, GUINT_TO_POINTER(id));
  g_signal_connect(request.get(), "cancelled", G_CALLBACK(onCancelled), this);
}

// A cancelled load cancels its request.
void PagePrompts::onCancelled(WebKitAuthenticationRequest* request, PagePrompts* self) {
  self->cancel(GPOINTER_TO_UINT(g_object_get_data(G_OBJECT(request), kPromptId)));
}

void PagePrompts::cancel(Prompts::Id id) {
  if (prompts_.cancel(id)) onShown_(false);
}

Prompts::Id PagePrompts::show(Prompt prompt, std::function<void(const PromptReply&)> onReply) {
  onShown_(true);
  return prompts_.show(std::move(prompt), reporting(std::move(onReply)));
}

Prompts::Id PagePrompts::showFirst(Prompt prompt, std::function<void(const PromptReply&)> onReply) {
  onShown_(true);
  return prompts_.showFirst(std::move(prompt), reporting(std::move(onReply)));
}

bool PagePrompts::replace(Prompts::Id id, Prompt prompt, std::function<void(const PromptReply&)> onReply) {
  return prompts_.replace(id, std::move(prompt), reporting(std::move(onReply)));
}

std::function<void(const PromptReply&)> PagePrompts::reporting(std::function<void(const PromptReply&)> onReply) {
  return [this, onReply = std::move(onReply)](const PromptReply& reply) {
    onReply(reply);
    onShown_(false);
  };
}
