#include "app/gtk/PageDialogs.h"

#include <memory>
#include <string>
#include <utility>

#include "app/gtk/GtkHandles.h"

namespace {

using DialogRef = std::shared_ptr<WebKitScriptDialog>;
using RequestRef = std::shared_ptr<WebKitAuthenticationRequest>;

std::string text(const char* utf8) {
  return utf8 == nullptr ? std::string() : validUtf8(utf8);
}

std::string nameOf(const Site& site) {
  if (!site.host.empty()) return leftToRight(site.host);
  return site.kind == Site::Kind::kFile ? "A page on this computer" : "A page that does not say whose it is";
}

Question questionOf(WebKitScriptDialog* dialog, const Site& site) {
  Question question;
  question.heading = nameOf(site) + ", or a page embedded in it, says:";
  question.words = text(webkit_script_dialog_get_message(dialog));
  const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(dialog);
  question.canBeDeclined = type != WEBKIT_SCRIPT_DIALOG_ALERT;
  if (type == WEBKIT_SCRIPT_DIALOG_PROMPT) {
    question.fields.push_back({"", text(webkit_script_dialog_prompt_get_default_text(dialog)), false});
  }
  return question;
}

void answer(WebKitScriptDialog* dialog, const Reply& reply) {
  const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(dialog);
  if (type == WEBKIT_SCRIPT_DIALOG_CONFIRM) webkit_script_dialog_confirm_set_confirmed(dialog, reply.accepted);
  if (type == WEBKIT_SCRIPT_DIALOG_PROMPT && reply.accepted) {
    webkit_script_dialog_prompt_set_text(dialog, reply.values.front().c_str());
  }
  webkit_script_dialog_close(dialog);
}

bool asksForPassword(WebKitAuthenticationRequest* request) {
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

bool isEncrypted(WebKitAuthenticationRequest* request) {
  const std::unique_ptr<WebKitSecurityOrigin, decltype(&webkit_security_origin_unref)> origin(
      webkit_authentication_request_get_security_origin(request), webkit_security_origin_unref);
  return g_strcmp0(webkit_security_origin_get_protocol(origin.get()), "https") == 0;
}

Question questionOf(WebKitAuthenticationRequest* request) {
  const bool isProxy = webkit_authentication_request_is_for_proxy(request);
  const std::string host = bracketed(text(webkit_authentication_request_get_host(request)));
  const std::string realm = text(webkit_authentication_request_get_realm(request));

  Question question;
  question.heading =
      (isProxy ? "The proxy " : "") + leftToRight(displayHost(host)) + " asks for your name and password";
  if (!realm.empty()) question.words = "It says: \u201C" + realm + "\u201D";
  if (webkit_authentication_request_is_retry(request)) question.warning = "That name or password was not right.";
  const Site::Kind kind = siteOf("http://" + host + "/", isEncrypted(request)).kind;
  if (!isProxy && kind != Site::Kind::kEncrypted && kind != Site::Kind::kLoopback) {
    question.warning += std::string(question.warning.empty() ? "" : " ") +
                        "The connection is not encrypted: others can read what you type.";
  }
  question.fields = {{"Name", text(nullptr), false}, {"Password", text(nullptr), true}};
  return question;
}

void answer(WebKitAuthenticationRequest* request, const Reply& reply) {
  if (!reply.accepted) return webkit_authentication_request_authenticate(request, nullptr);
  WebKitCredential* const credential = webkit_credential_new(reply.values[0].c_str(), reply.values[1].c_str(),
                                                             WEBKIT_CREDENTIAL_PERSISTENCE_FOR_SESSION);
  webkit_authentication_request_authenticate(request, credential);
  webkit_credential_free(credential);
}

}  // namespace

PageDialogs::PageDialogs(WebKitWebView* view, Sheet& sheet, Allowance& allowance, std::function<Site()> site,
                         LoadEvents& events)
    : sheet_(sheet), allowance_(allowance), site_(std::move(site)), events_(events) {
  g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), this);
  g_signal_connect(view, "script-dialog", G_CALLBACK(onScriptDialog), this);
  g_signal_connect(view, "authenticate", G_CALLBACK(onAuthenticate), this);
}

// WebKit takes back what a page's own load has asked, but not what its frames and pictures have.
void PageDialogs::onLoadChanged(WebKitWebView*, WebKitLoadEvent step, PageDialogs* self) {
  if (step == WEBKIT_LOAD_COMMITTED) self->sheet_.declineAll();
}

gboolean PageDialogs::onScriptDialog(WebKitWebView*, WebKitScriptDialog* dialog, PageDialogs* self) {
  if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
    webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
    return TRUE;
  }
  if (!self->allowance_.spend()) return TRUE;

  const DialogRef kept(webkit_script_dialog_ref(dialog), webkit_script_dialog_unref);
  self->ask(questionOf(dialog, self->site_()), [kept](const Reply& reply) { answer(kept.get(), reply); });
  return TRUE;
}

gboolean PageDialogs::onAuthenticate(WebKitWebView*, WebKitAuthenticationRequest* request, PageDialogs* self) {
  if (!asksForPassword(request) || !self->allowance_.spend()) {
    webkit_authentication_request_authenticate(request, nullptr);
    return TRUE;
  }
  const RequestRef kept(WEBKIT_AUTHENTICATION_REQUEST(g_object_ref(request)), g_object_unref);
  const Sheet::Number number =
      self->ask(questionOf(request), [kept](const Reply& reply) { answer(kept.get(), reply); });

  // A load that is given up takes its request back.
  g_object_set_data(G_OBJECT(request), "svo-question", GUINT_TO_POINTER(number));
  g_signal_connect(request, "cancelled", G_CALLBACK(+[](WebKitAuthenticationRequest* cancelled, PageDialogs* dialogs) {
                     const auto question = GPOINTER_TO_UINT(g_object_get_data(G_OBJECT(cancelled), "svo-question"));
                     if (dialogs->sheet_.withdraw(question)) dialogs->events_.personAnswered();
                   }),
                   self);
  return TRUE;
}

Sheet::Number PageDialogs::ask(Question question, std::function<void(const Reply&)> onReply) {
  events_.personAsked();
  return sheet_.ask(std::move(question), [this, onReply = std::move(onReply)](const Reply& reply) {
    onReply(reply);
    events_.personAnswered();
  });
}
