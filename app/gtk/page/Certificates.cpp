#include "app/gtk/page/Certificates.h"

#include <cstring>  // explicit_bzero

#include <algorithm>
#include <iterator>
#include <utility>

#include "app/gtk/Language.h"
#include "app/gtk/page/Site.h"
#include "applog/Logger.h"

namespace {

using RequestRef = Owned<WebKitAuthenticationRequest>;

std::string keyOf(WebKitAuthenticationRequest* request) {
  return std::string(orEmpty(webkit_authentication_request_get_host(request))) + ":" +
         std::to_string(webkit_authentication_request_get_port(request));
}

void overwrite(std::string& secret) {
  explicit_bzero(secret.data(), secret.size());
  secret.clear();
}

bool isExpired(const TokenCertificate& certificate) {
  return certificate.expiry < g_get_real_time() / G_USEC_PER_SEC;
}

std::string dateOf(std::int64_t time) {
  const Owned<GDateTime, g_date_time_unref> date(g_date_time_new_from_unix_local(time));
  return date ? Owned<char, g_free>(g_date_time_format(date.get(), "%F")).get() : "?";
}

std::string choiceFor(const TokenCertificate& certificate) {
  const char* const issued = isExpired(certificate) ? _("Issued by \u201C%1\u201D, expired on %2")
                                                    : _("Issued by \u201C%1\u201D, valid until %2");
  return displayed("%1", {certificate.name}) + "\n" +
         displayed(issued, {certificate.issuer, dateOf(certificate.expiry)}) + "\n" +
         displayed(_("On \u201C%1\u201D"), {certificate.token});
}

std::string warningFor(Opening opening, const std::string& token) {
  switch (opening) {
    case Opening::kWrongPin:
      return _("That PIN was not right.");
    case Opening::kFewTries:
      return _("That PIN was not right. Only a few tries are left.");
    case Opening::kFinalTry:
      return _("That PIN was not right. One try is left; after it the PIN is locked.");
    case Opening::kLocked:
      return displayed(_("The PIN of \u201C%1\u201D is locked: it was wrong too often."), {token});
    default:
      return displayed(_("\u201C%1\u201D cannot be used. Is it still there?"), {token});
  }
}

// Does not read the token.
Owned<GTlsCertificate> newCertificate(const TokenCertificate& certificate) {
  return Owned<GTlsCertificate>(G_TLS_CERTIFICATE(g_initable_new(
      g_tls_backend_get_certificate_type(g_tls_backend_get_default()), nullptr, nullptr, "certificate-pem",
      certificate.pem.c_str(), "private-key-pkcs11-uri", certificate.key.c_str(), nullptr)));
}

// WebKit does not store the credential: its store would not compare the origin of the main frame.
void authenticate(WebKitAuthenticationRequest* request, WebKitCredential* credential) {
  const Owned<WebKitCredential, webkit_credential_free> owned(credential);
  webkit_authentication_request_authenticate(request, credential);
}

}  // namespace

struct Certificates::Origin {
  explicit Origin(WebKitAuthenticationRequest* request)
      : site(inPrompt(displayHost(bracketed(validUtf8(orEmpty(webkit_authentication_request_get_host(request))))))) {}
  ~Origin() { overwrite(pin); }

  Origin(const Origin&) = delete;
  Origin& operator=(const Origin&) = delete;

  std::string site;
  std::vector<RequestRef> waiting;
  TokenCertificate certificate;  // the one whose PIN is asked
  std::string pin;
  bool hasDecided = false;
  Owned<GTlsCertificate> chosen;  // nullptr: none
  bool hasLogged = false;
  Prompts::Id prompt = 0;
  Tokens tokens;
};

Certificates::Certificates(Show show, Cancel cancel, RequestLimit& limit)
    : show_(std::move(show)), cancel_(std::move(cancel)), limit_(limit) {}

Certificates::~Certificates() {
  for (const auto& [key, origin] : origins_) {
    for (const RequestRef& each : origin->waiting)
      g_signal_handlers_disconnect_by_data(each.get(), this);
  }
}

void Certificates::choose(WebKitAuthenticationRequest* request) {
  std::unique_ptr<Origin>& origin = origins_[keyOf(request)];
  if (!origin) origin = std::make_unique<Origin>(request);
  g_signal_connect(request, "cancelled", G_CALLBACK(onCancelled), this);
  origin->waiting.emplace_back(WEBKIT_AUTHENTICATION_REQUEST(g_object_ref(request)));
  if (origin->hasDecided) return reply(*origin);
  if (origin->waiting.size() == 1) ask(*origin, "");
}

// The network process asks again if the token has refused the PIN, which has changed since.
void Certificates::unlock(WebKitAuthenticationRequest* request) {
  const auto found = origins_.find(keyOf(request));
  const bool isKnown = found != origins_.end() && found->second->chosen != nullptr;
  if (isKnown && (webkit_authentication_request_get_certificate_pin_flags(request) & G_TLS_PASSWORD_RETRY) == 0) {
    return authenticate(request, webkit_credential_new_for_certificate_pin(found->second->pin.c_str(),
                                                                           WEBKIT_CREDENTIAL_PERSISTENCE_NONE));
  }
  if (isKnown) origins_.erase(found);
  authenticate(request, nullptr);
}

void Certificates::declineAll() {
  for (auto each = origins_.begin(); each != origins_.end();) {
    Origin& origin = *each->second;
    if (!origin.hasDecided) {
      cancel_(origin.prompt);
      reply(origin);
    }
    each = origin.hasDecided ? std::next(each) : origins_.erase(each);
  }
}

void Certificates::ask(Origin& origin, const std::string& warning) {
  origin.tokens.list([this, &origin, warning](std::vector<TokenCertificate> certificates) {
    onListed(origin, warning, std::move(certificates));
  });
}

// Without any certificate there is nothing to choose, unless the user has just chosen one. The user may insert a token
// before the next request.
void Certificates::onListed(Origin& origin, const std::string& warning, std::vector<TokenCertificate> certificates) {
  if (certificates.empty() && warning.empty()) {
    if (!std::exchange(origin.hasLogged, true)) {
      Logger::getInstance()->logWarn("SVO", "A server asked for a client certificate: no token has one");
    }
    return reply(origin);
  }
  if (warning.empty() && !limit_.take()) return reply(origin);
  std::stable_partition(certificates.begin(), certificates.end(), [](const auto& each) { return !isExpired(each); });
  Prompt prompt;
  prompt.message = certificates.empty() ? _("Insert the token, then choose OK.") : _("Choose who signs in:");
  prompt.warning = warning;
  for (const TokenCertificate& each : certificates)
    prompt.choices.push_back(choiceFor(each));
  show(origin, std::move(prompt), [this, &origin, warning, certificates](const PromptReply& reply) {
    if (certificates.empty()) return ask(origin, warning);
    origin.certificate = certificates[reply.choice];
    switch (origin.certificate.login) {
      case Login::kPin:
        return askPin(origin, "");
      case Login::kReader:  // the network process causes the question; asking here too would be a second one
        return decide(origin, true);
      default:
        return open(origin, "");
    }
  });
}

void Certificates::askPin(Origin& origin, const std::string& warning) {
  Prompt prompt;
  prompt.warning = warning;
  prompt.fields = {{displayed(_("PIN of \u201C%1\u201D"), {origin.certificate.token}), "", true}};
  show(origin, std::move(prompt), [this, &origin](const PromptReply& reply) {
    const std::string& pin = reply.values.front();
    if (pin.empty()) return askPin(origin, "");
    if (pin.size() > kMaxPin) return askPin(origin, warningFor(Opening::kWrongPin, ""));  // costs no try
    open(origin, pin);
  });
}

// The prompt stays until the token has replied, so that the user can cancel and the page gets no keys.
void Certificates::open(Origin& origin, const std::string& pin) {
  overwrite(origin.pin);
  origin.pin = pin;
  Prompt prompt;
  prompt.message = displayed(_("Waiting for \u201C%1\u201D\u2026"), {origin.certificate.token});
  prompt.canBeAccepted = false;
  show(origin, std::move(prompt), {});
  origin.tokens.open(origin.certificate.key, pin, [this, &origin](Opening opening) {
    cancel_(origin.prompt);
    onOpened(origin, opening);
  });
}

void Certificates::onOpened(Origin& origin, Opening opening) {
  const std::string warning = warningFor(opening, origin.certificate.token);
  switch (opening) {
    case Opening::kOpened:
      return decide(origin, true);
    case Opening::kGone:
    case Opening::kLocked:
      return ask(origin, warning);
    default:
      return askPin(origin, warning);
  }
}

void Certificates::show(Origin& origin, Prompt prompt, std::function<void(const PromptReply&)> onAccepted) {
  prompt.heading = displayed(_("%1 asks for a certificate"), {origin.site});
  origin.prompt =
      show_(std::move(prompt), [this, &origin, onAccepted = std::move(onAccepted)](const PromptReply& reply) {
        if (reply.accepted) return onAccepted(reply);
        Logger::getInstance()->logInfo("SVO", "A server asked for a client certificate: the user chose none");
        decide(origin, false);
      });
}

void Certificates::decide(Origin& origin, bool withCertificate) {
  origin.hasDecided = true;
  if (withCertificate) origin.chosen = newCertificate(origin.certificate);
  reply(origin);
}

void Certificates::reply(Origin& origin) {
  origin.tokens.cancel();
  for (const RequestRef& each : std::exchange(origin.waiting, {})) {
    g_signal_handlers_disconnect_by_data(each.get(), this);
    authenticate(each.get(), origin.chosen ? webkit_credential_new_for_certificate(origin.chosen.get(),
                                                                                   WEBKIT_CREDENTIAL_PERSISTENCE_NONE)
                                           : nullptr);
  }
}

// A cancelled load cancels its request.
void Certificates::onCancelled(WebKitAuthenticationRequest* request, Certificates* self) {
  const auto found = self->origins_.find(keyOf(request));
  Origin& origin = *found->second;
  g_signal_handlers_disconnect_by_data(request, self);
  origin.waiting.erase(std::find_if(origin.waiting.begin(), origin.waiting.end(),
                                    [request](const RequestRef& each) { return each.get() == request; }));
  if (!origin.waiting.empty() || origin.hasDecided) return;
  self->cancel_(origin.prompt);
  self->origins_.erase(found);
}
