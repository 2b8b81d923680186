// svo-signin-tokens: lists the client certificates on the user's tokens (smart cards, key stores), and tries a PIN.
//
//   svo-signin-tokens PARENT list      prints the certificates as text of the GVariant type kCertificatesType
//   svo-signin-tokens PARENT open URI  reads a PIN from standard input and opens the private key; the exit status is an
//                                      `Opening`
//
// - A program of its own: it runs the token modules that p11-kit knows, which are third-party code. They may crash,
//   block or print without effect on the window, and are loaded only when a server asks for a certificate.
// - Ends with the process PARENT, the window.

#include <gio/gio.h>
#include <gnutls/abstract.h>
#include <gnutls/gnutls.h>
#include <gnutls/pkcs11.h>
#include <gnutls/x509.h>
#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "app/gtk/Glib.h"
#include "app/gtk/tokens/Protocol.h"

namespace {

using Certificate = Owned<gnutls_x509_crt_int, gnutls_x509_crt_deinit>;

// Names and identifiers on a token have no maximum length that all functions of GnuTLS report.
using Text = std::array<char, 1024>;

void freeText(char* text) {
  gnutls_free(text);
}

std::string infoOf(gnutls_pkcs11_obj_t object, gnutls_pkcs11_obj_info_t kind) {
  Text text{};
  std::size_t size = text.size();
  return gnutls_pkcs11_obj_get_info(object, kind, text.data(), &size) == 0 ? text.data() : "";
}

std::string urlOf(gnutls_pkcs11_obj_t object) {
  char* url = nullptr;
  if (gnutls_pkcs11_obj_export_url(object, GNUTLS_PKCS11_URL_GENERIC, &url) != 0) return {};
  const Owned<char, freeText> owned(url);
  return url;
}

// The certificates, or the visible keys, of a token.
class Objects {
 public:
  Objects(const std::string& token, unsigned flags) {
    if (gnutls_pkcs11_obj_list_import_url4(&list_, &count_, token.c_str(), flags) != 0) count_ = 0;
  }
  ~Objects() {
    for (gnutls_pkcs11_obj_t const each : *this)
      gnutls_pkcs11_obj_deinit(each);
    gnutls_free(list_);
  }
  Objects(const Objects&) = delete;
  Objects& operator=(const Objects&) = delete;

  gnutls_pkcs11_obj_t* begin() const { return list_; }
  gnutls_pkcs11_obj_t* end() const { return list_ + count_; }

 private:
  gnutls_pkcs11_obj_t* list_ = nullptr;
  unsigned count_ = 0;
};

Certificate certificateOf(gnutls_pkcs11_obj_t object) {
  gnutls_x509_crt_t certificate = nullptr;
  if (gnutls_x509_crt_init(&certificate) != 0) return nullptr;
  Certificate owned(certificate);
  return gnutls_x509_crt_import_pkcs11(certificate, object) == 0 ? std::move(owned) : nullptr;
}

// Whether the certificate says that it may identify a client: what it does not restrict is allowed (RFC 5280, sections
// 4.2.1.3, 4.2.1.9 and 4.2.1.12).
bool isForClients(gnutls_x509_crt_t certificate) {
  unsigned critical = 0;
  if (gnutls_x509_crt_get_ca_status(certificate, &critical) > 0) return false;

  unsigned usage = 0;
  if (gnutls_x509_crt_get_key_usage(certificate, &usage, &critical) == 0 &&
      (usage & GNUTLS_KEY_DIGITAL_SIGNATURE) == 0) {
    return false;
  }
  for (unsigned index = 0;; ++index) {
    Text purpose{};
    std::size_t size = purpose.size();
    if (gnutls_x509_crt_get_key_purpose_oid(certificate, index, purpose.data(), &size, &critical) != 0)
      return index == 0;
    const std::string_view oid(purpose.data());
    if (oid == GNUTLS_KP_TLS_WWW_CLIENT || oid == GNUTLS_KP_ANY) return true;
  }
}

using NameReader = int (*)(const gnutls_x509_crt_t, const char* oid, unsigned index, unsigned raw, void* text,
                           std::size_t* size);

// The common name or, without one, the organization.
std::string nameIn(gnutls_x509_crt_t certificate, NameReader read) {
  for (const char* const oid : {GNUTLS_OID_X520_COMMON_NAME, GNUTLS_OID_X520_ORGANIZATION_NAME}) {
    Text name{};
    std::size_t size = name.size();
    if (read(certificate, oid, 0, 0, name.data(), &size) == 0) return name.data();
  }
  return {};
}

std::string pemOf(gnutls_x509_crt_t certificate) {
  gnutls_datum_t pem{};
  if (gnutls_x509_crt_export2(certificate, GNUTLS_X509_FMT_PEM, &pem) != 0) return {};
  std::string text(reinterpret_cast<const char*>(pem.data), pem.size);
  gnutls_free(pem.data);
  return text;
}

// A certificate and its key have the same identifier.
std::string keyOf(const std::string& certificateUrl) {
  constexpr std::string_view kFrom = "type=cert";
  const std::size_t at = certificateUrl.rfind(kFrom);
  std::string url = certificateUrl;
  // The labels of the two may differ.
  if (at != std::string::npos) url.replace(at, kFrom.size(), "type=private");
  const std::size_t label = url.find(";object=");
  if (label != std::string::npos) url.erase(label, url.find(';', label + 1) - label);
  return url;
}

Login loginOf(unsigned flags) {
  if ((flags & GNUTLS_PKCS11_TOKEN_LOGIN_REQUIRED) == 0) return Login::kNone;
  return (flags & GNUTLS_PKCS11_TOKEN_PROTECTED_AUTHENTICATION_PATH) != 0 ? Login::kReader : Login::kPin;
}

void addCertificates(GVariantBuilder* list, const std::string& token) {
  unsigned flags = 0;
  if (gnutls_pkcs11_token_get_flags(token.c_str(), &flags) != 0 || (flags & GNUTLS_PKCS11_TOKEN_TRUSTED) != 0) return;
  const Login login = loginOf(flags);

  // Before the login a token may hide its keys.
  std::set<std::string> keys;
  if (login == Login::kNone) {
    for (gnutls_pkcs11_obj_t const each : Objects(token, GNUTLS_PKCS11_OBJ_FLAG_PRIVKEY))
      keys.insert(infoOf(each, GNUTLS_PKCS11_OBJ_ID_HEX));
  }
  for (gnutls_pkcs11_obj_t const each : Objects(token, GNUTLS_PKCS11_OBJ_FLAG_CRT)) {
    const std::string id = infoOf(each, GNUTLS_PKCS11_OBJ_ID_HEX);
    const Certificate certificate = certificateOf(each);
    if (id.empty() || (login == Login::kNone && keys.count(id) == 0)) continue;
    if (!certificate || !isForClients(certificate.get())) continue;
    const std::string name = validUtf8(nameIn(certificate.get(), gnutls_x509_crt_get_dn_by_oid));
    const std::string issuer = validUtf8(nameIn(certificate.get(), gnutls_x509_crt_get_issuer_dn_by_oid));
    const std::string label = validUtf8(infoOf(each, GNUTLS_PKCS11_OBJ_TOKEN_LABEL));
    g_variant_builder_add(list, kCertificateType, name.c_str(), issuer.c_str(), label.c_str(),
                          static_cast<gint64>(gnutls_x509_crt_get_expiration_time(certificate.get())),
                          pemOf(certificate.get()).c_str(), keyOf(urlOf(each)).c_str(), static_cast<guint32>(login));
  }
}

int listCertificates(int output) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE(kCertificatesType));
  for (unsigned index = 0;; ++index) {
    char* url = nullptr;
    if (gnutls_pkcs11_token_get_url(index, GNUTLS_PKCS11_URL_GENERIC, &url) != 0) break;
    const Owned<char, freeText> owned(url);
    addCertificates(&list, url);
  }
  const Owned<GVariant, g_variant_unref> all(g_variant_ref_sink(g_variant_builder_end(&list)));
  const Owned<char, g_free> text(g_variant_print(all.get(), FALSE));
  dprintf(output, "%s", text.get());
  return 0;
}

// Gives the PIN once. A second question means that it was wrong.
int onPin(void* pin, int attempt, const char*, const char*, unsigned, char* to, std::size_t size) {
  const std::size_t length = strlen(static_cast<const char*>(pin));
  if (attempt > 0 || length >= size) return -1;
  memcpy(to, pin, length + 1);
  return 0;
}

Opening wrongPin(const std::string& key) {
  unsigned flags = 0;
  if (gnutls_pkcs11_token_get_flags(key.c_str(), &flags) != 0) return Opening::kGone;
  if ((flags & GNUTLS_PKCS11_TOKEN_USER_PIN_LOCKED) != 0) return Opening::kLocked;
  if ((flags & GNUTLS_PKCS11_TOKEN_USER_PIN_FINAL_TRY) != 0) return Opening::kFinalTry;
  return (flags & GNUTLS_PKCS11_TOKEN_USER_PIN_COUNT_LOW) != 0 ? Opening::kFewTries : Opening::kWrongPin;
}

Opening openKey(const std::string& url, char* pin) {
  gnutls_privkey_t key = nullptr;
  if (gnutls_privkey_init(&key) != 0) return Opening::kGone;
  const Owned<gnutls_privkey_st, gnutls_privkey_deinit> owned(key);
  gnutls_privkey_set_pin_function(key, onPin, pin);
  switch (gnutls_privkey_import_url(key, url.c_str(), 0)) {
    case 0:
      return Opening::kOpened;
    case GNUTLS_E_PKCS11_PIN_LOCKED:
      return Opening::kLocked;
    case GNUTLS_E_PKCS11_PIN_ERROR:
      return wrongPin(url);
    default:
      return Opening::kGone;
  }
}

int tryPin(const char* url) {
  std::array<char, kMaxPin + 1> pin{};
  std::size_t length = 0;
  while (length < pin.size() - 1) {
    const ssize_t count = read(STDIN_FILENO, pin.data() + length, pin.size() - 1 - length);
    if (count <= 0) break;
    length += static_cast<std::size_t>(count);
  }
  const Opening opening = openKey(url, pin.data());
  explicit_bzero(pin.data(), pin.size());
  return static_cast<int>(opening);
}

}  // namespace

int main(int argc, char** argv) {
  (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
  (void)prctl(PR_SET_DUMPABLE, 0);  // a crash collector would get the PIN
  if (argc < 3 || argv[1] != std::to_string(getppid())) return static_cast<int>(Opening::kGone);

  // Modules may print.
  const int output = dup(STDOUT_FILENO);
  (void)dup2(STDERR_FILENO, STDOUT_FILENO);

  const std::string_view command(argv[2]);
  int result = static_cast<int>(Opening::kGone);
  if (command == "list") result = listCertificates(output);
  if (command == "open" && argc > 3) result = tryPin(argv[3]);
  _exit(result);  // a module may block while it is unloaded
}
