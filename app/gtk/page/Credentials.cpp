#include "app/gtk/page/Credentials.h"

#include <chrono>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "app/Address.h"
#include "app/gtk/Glib.h"
#include "app/gtk/Language.h"
#include "app/gtk/keys/WebAuthn.h"
#include "app/gtk/page/Settings.h"
#include "applog/Logger.h"
#include "platform/Url.h"

namespace {

constexpr char kHandler[] = "credentials";
constexpr char kSignal[] = "script-message-with-reply-received::credentials";

constexpr char kPageScript[] =
#include "CredentialsScript.inc"
    ;

// Uses `window` only: a page can give `document` members with the names of its forms. `self.origin` is "null" in a
// sandboxed document, `location.origin` is not. Objects would be cloned, which runs the page's getters.
constexpr char kScript[] = R"((() => {
  'use strict';
  const handler = webkit.messageHandlers.credentials;
  addEventListener('svo-credentials', async ({ detail }) => {
    if (!isSecureContext || typeof detail !== 'string' || detail.length > 256 << 10) return;
    const reply = await handler.postMessage([self.origin, detail]);
    if (reply !== '') dispatchEvent(new CustomEvent('svo-credentials-reply', { detail: reply }));
  });
})();)";

constexpr char kNotAllowed[] = "NotAllowedError";
constexpr char kSecurity[] = "SecurityError";

using Origin = Owned<WebKitSecurityOrigin, webkit_security_origin_unref>;

Origin originOf(const std::string& address) {
  return Origin(webkit_security_origin_new_for_uri(address.c_str()));
}

std::string hostOf(const std::string& origin) {
  return orEmpty(webkit_security_origin_get_host(originOf(origin).get()));
}

bool mayUseKeys(const Site& site) {
  return site.kind == Site::Kind::kEncrypted || site.kind == Site::Kind::kLoopback;
}

std::string textAt(JSCValue* message, unsigned index) {
  const Owned<JSCValue> item(jsc_value_object_get_property_at_index(message, index));
  if (!jsc_value_is_string(item.get())) return {};
  return orEmpty(Owned<char, g_free>(jsc_value_to_string(item.get())).get());
}

using Script = Owned<WebKitUserScript, webkit_user_script_unref>;

// The FIDO AppID rule (FIDO AppID and Facet Specification, section 3.1.2) without the list of other sites that an AppID
// may name. Only an address is hashed: the hash of anything else could be that of an RP ID.
bool mayUseAppId(const std::string& host, const std::string& appId) {
  return hasScheme(appId, "https") && platform::isUrl(appId) && mayUse(host, hostOf(appId));
}

const char* nameOf(bool isRegistration) {
  return isRegistration ? "registration" : "sign-in";
}

const char* nameOf(KeyError error) {
  switch (error) {
    case KeyError::kInvalidState:
      return "InvalidStateError";
    case KeyError::kConstraint:
      return "ConstraintError";
    case KeyError::kNotSupported:
      return "NotSupportedError";
    default:
      return kNotAllowed;
  }
}

std::string nameOf(const KeyAccount& account) {
  const std::string& first = account.displayName.empty() ? account.name : account.displayName;
  if (account.name.empty() || account.name == first) return displayed("%1", {first});
  return displayed("%1", {first}) + "\n" + displayed("%1", {account.name});
}

}  // namespace

// A reply that has been sent cannot be sent again.
class Credentials::Reply {
 public:
  Reply(WebKitScriptMessageReply* reply, JSCContext* context)
      : reply_(webkit_script_message_reply_ref(reply)), context_(JSC_CONTEXT(g_object_ref(context))) {}

  JSCContext* context() const { return context_.get(); }

  void send(const std::string& text) {
    const Owned<JSCValue> value(jsc_value_new_string(context(), text.c_str()));
    webkit_script_message_reply_return_value(reply_.get(), value.get());
  }

 private:
  Owned<WebKitScriptMessageReply, webkit_script_message_reply_unref> reply_;
  Owned<JSCContext> context_;
};

struct Credentials::Ceremony {
  Ceremony(Reply replyTo, const CredentialRequest& request, const Site& site, const std::string& relyingParty)
      : id(request.id),
        reply(std::move(replyTo)),
        isRegistration(std::holds_alternative<Registration>(request.options)),
        hasAppId(request.appId),
        host(inPrompt(site.host)),
        rpId(inPrompt(displayHost(relyingParty))) {}

  std::string id;
  Reply reply;
  bool isRegistration;
  bool hasAppId;
  std::string host;  // as displayed
  std::string rpId;  // as displayed
  std::string clientDataJson;
  bool hasWarned = false;
  Prompts::Id prompt = 0;
};

Credentials::Credentials(WebKitUserContentManager* content, PagePrompts& prompts)
    : content_(content), prompts_(prompts) {
  constexpr auto kFrames = WEBKIT_USER_CONTENT_INJECT_TOP_FRAME;
  constexpr auto kTime = WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
  const Script ofPage(webkit_user_script_new(kPageScript, kFrames, kTime, nullptr, nullptr));
  const Script own(webkit_user_script_new_for_world(kScript, kFrames, kTime, kScriptWorld, nullptr, nullptr));
  webkit_user_content_manager_add_script(content_, ofPage.get());
  webkit_user_content_manager_add_script(content_, own.get());
  webkit_user_content_manager_register_script_message_handler_with_reply(content_, kHandler, kScriptWorld);
  g_signal_connect(content_, kSignal, G_CALLBACK(onMessage), this);
}

Credentials::~Credentials() {
  g_signal_handlers_disconnect_by_data(content_, this);
}

void Credentials::navigationStarted() {
  isLeaving_ = true;
  fail(kNotAllowed);
}

void Credentials::committed(const std::string& address, const Site& site) {
  fail(kNotAllowed);
  isLeaving_ = false;
  press_ = {};  // it was meant for the page before
  site_ = site;
  origin_.clear();
  if (!mayUseKeys(site)) return;
  origin_ = orEmpty(Owned<char, g_free>(webkit_security_origin_to_string(originOf(address).get())).get());
}

void Credentials::processEnded() {
  fail(kNotAllowed);
  origin_.clear();
}

gboolean Credentials::onMessage(WebKitUserContentManager*, JSCValue* message, WebKitScriptMessageReply* reply,
                                Credentials* self) {
  self->receive(textAt(message, 0), textAt(message, 1), Reply(reply, jsc_value_get_context(message)));
  return TRUE;
}

void Credentials::receive(const std::string& origin, const std::string& text, Reply reply) {
  std::optional<CredentialRequest> request = decodeCredentialRequest(reply.context(), text);
  if (!request) return reply.send("");
  if (request->isCancel) {
    if (ceremony_ && origin == origin_ && ceremony_->id == request->id) fail("AbortError");
    return reply.send("");
  }
  const std::string error = reasonToRefuse(origin, *request);
  if (!error.empty()) return reply.send(encodeFailure(request->id, error));
  begin(std::move(reply), *std::move(request));
}

// A refused request leaves the press for the next one.
std::string Credentials::reasonToRefuse(const std::string& origin, const CredentialRequest& request) {
  if (origin_.empty() || origin != origin_ || isLeaving_) return kNotAllowed;
  if (!request.error.empty()) return request.error;
  const std::string host = hostOf(origin_);
  if (!mayUse(host, request.rpId.value_or(host))) return kSecurity;
  if (request.appId && !mayUseAppId(host, *request.appId)) return kSecurity;
  const bool mayBegin = !ceremony_ && !prompts_.isShown() && press_.take(g_get_monotonic_time());
  return mayBegin ? "" : kNotAllowed;
}

void Credentials::begin(Reply reply, CredentialRequest request) {
  const std::string rpId = request.rpId.value_or(hostOf(origin_));
  ceremony_ = std::make_unique<Ceremony>(std::move(reply), request, site_, rpId);
  Ceremony& ceremony = *ceremony_;
  Logger::getInstance()->logInfo("SVO", "Security key: a %s has begun", nameOf(ceremony.isRegistration));
  ceremony.clientDataJson =
      clientDataJson(ceremony.isRegistration ? "webauthn.create" : "webauthn.get", request.challenge, origin_);
  showStep(_("Insert your security key."));
  if (auto* const registration = std::get_if<Registration>(&request.options)) {
    registration->rpId = rpId;
    registration->clientDataHash = sha256(ceremony.clientDataJson);
    keys_.start(std::move(*registration), request.timeout, events());
  } else {
    auto& assertion = std::get<Assertion>(request.options);
    assertion.rpId = rpId;
    assertion.clientDataHash = sha256(ceremony.clientDataJson);
    assertion.appId = request.appId;
    keys_.start(std::move(assertion), request.timeout, events());
  }
}

SecurityKeys::Events Credentials::events() {
  SecurityKeys::Events events;
  events.onNeedsKey = [this](bool withoutPermission) {
    if (withoutPermission && !std::exchange(ceremony_->hasWarned, true)) {
      Logger::getInstance()->logWarn("SVO", "Security key: this user may not open the one that is plugged in");
    }
    showStep(_("Insert your security key."));
  };
  events.onNeedsTouch = [this] { showStep(_("Touch your security key.")); };
  events.onNeedsPin = [this](std::optional<int> triesLeft, bool isWrong) { askPin(triesLeft, isWrong); };
  events.onPinBlocked = [this](bool untilReinserted) {
    showStep(untilReinserted ? _("The PIN was wrong too often. Remove the security key and insert it again.")
                             : _("The PIN of the security key is locked: it was wrong too often."));
  };
  events.onAccounts = [this](const std::vector<KeyAccount>& accounts) { askAccount(accounts); };
  events.onRegistered = [this](const RegistrationResult& result) {
    end("registered", encodeRegistration(ceremony_->id, ceremony_->clientDataJson, result));
  };
  events.onAsserted = [this](const AssertionResult& result) {
    end("signed in", encodeAssertion(ceremony_->id, ceremony_->clientDataJson, result, ceremony_->hasAppId));
  };
  events.onFailed = [this](KeyError error) { fail(nameOf(error)); };
  return events;
}

void Credentials::showStep(const std::string& step) {
  Prompt prompt;
  prompt.message = step;
  prompt.canBeAccepted = false;
  show(std::move(prompt), {});
}

void Credentials::askPin(std::optional<int> triesLeft, bool isWrong) {
  Prompt prompt;
  if (isWrong) prompt.warning = _("That PIN was not right.");
  if (triesLeft) prompt.message = displayed(_("Tries left: %1"), {std::to_string(*triesLeft)});
  prompt.fields = {{_("PIN of your security key"), "", true}};
  show(std::move(prompt), [this, triesLeft](const PromptReply& reply) {
    const std::string& pin = reply.values.front();
    if (!keys_.givePin(pin)) return askPin(triesLeft, !pin.empty());
    showStep(_("Checking the PIN\u2026"));
  });
}

void Credentials::askAccount(const std::vector<KeyAccount>& accounts) {
  Prompt prompt;
  prompt.message = _("Choose the account:");
  for (const KeyAccount& each : accounts)
    prompt.choices.push_back(nameOf(each));
  show(std::move(prompt), [this](const PromptReply& reply) { keys_.chooseAccount(reply.choice); });
}

void Credentials::show(Prompt prompt, std::function<void(const PromptReply&)> onAccepted) {
  const char* const purpose =
      ceremony_->isRegistration ? _("Register a security key for %1.") : _("Sign in to %1 with a security key.");
  prompt.heading = displayed(_("%1 asks for your security key"), {ceremony_->host});
  prompt.message = displayed(purpose, {ceremony_->rpId}) + "\n" + prompt.message;
  const auto onReply = [this, onAccepted = std::move(onAccepted)](const PromptReply& reply) {
    if (!reply.accepted) return fail(kNotAllowed);
    onAccepted(reply);
  };
  if (!prompts_.replace(ceremony_->prompt, prompt, onReply)) ceremony_->prompt = prompts_.showFirst(prompt, onReply);
}

void Credentials::fail(const std::string& error) {
  if (ceremony_) end(error, encodeFailure(ceremony_->id, error));
}

void Credentials::end(const std::string& outcome, const std::string& reply) {
  const std::unique_ptr<Ceremony> ended = std::move(ceremony_);
  keys_.cancel();
  prompts_.cancel(ended->prompt);
  Logger::getInstance()->logInfo("SVO", "Security key: the %s has ended: %s", nameOf(ended->isRegistration),
                                 outcome.c_str());
  ended->reply.send(reply);
}
