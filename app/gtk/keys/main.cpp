// svo-signin-keys: carries out one ceremony with the security keys that are plugged in. Protocol.h describes its
// standard input and output.
//
// - A program of its own: a key may block or send what libfido2 does not expect, without effect on the window, and
//   the window loads libfido2 for no page that does not ask for a key.
// - Ends with its standard input, and thus with the window.

#include <fido.h>
#include <glib.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "app/gtk/Glib.h"
#include "app/gtk/keys/Answers.h"
#include "app/gtk/keys/Ceremony.h"
#include "app/gtk/keys/Protocol.h"
#include "app/gtk/keys/WebAuthn.h"

namespace {

std::string textIn(GVariant* tuple, gsize index) {
  const char* text = nullptr;
  g_variant_get_child(tuple, index, "&s", &text);
  return text;
}

std::vector<Bytes> listIn(GVariant* tuple, gsize index) {
  const Variant list(g_variant_get_child_value(tuple, index));
  std::vector<Bytes> all;
  for (gsize i = 0; i < g_variant_n_children(list.get()); ++i)
    all.push_back(bytesIn(list.get(), i));
  return all;
}

template <typename Enum>
Enum enumIn(GVariant* tuple, gsize index) {
  guint32 value = 0;
  g_variant_get_child(tuple, index, "u", &value);
  return static_cast<Enum>(value);
}

Registration registrationOf(GVariant* tuple) {
  Registration request;
  request.rpId = textIn(tuple, 0);
  request.rpName = textIn(tuple, 1);
  request.userId = bytesIn(tuple, 2);
  request.userName = textIn(tuple, 3);
  request.userDisplayName = textIn(tuple, 4);
  request.clientDataHash = bytesIn(tuple, 5);
  const Variant algorithms(g_variant_get_child_value(tuple, 6));
  for (gsize i = 0; i < g_variant_n_children(algorithms.get()); ++i) {
    gint32 algorithm = 0;
    g_variant_get_child(algorithms.get(), i, "i", &algorithm);
    request.algorithms.push_back(algorithm);
  }
  request.excluded = listIn(tuple, 7);
  request.residentKey = enumIn<ResidentKey>(tuple, 8);
  request.userVerification = enumIn<UserVerification>(tuple, 9);
  return request;
}

Assertion assertionOf(GVariant* tuple) {
  Assertion request;
  request.rpId = textIn(tuple, 0);
  request.clientDataHash = bytesIn(tuple, 1);
  request.allowed = listIn(tuple, 2);
  request.userVerification = enumIn<UserVerification>(tuple, 3);
  const char* appId = nullptr;
  g_variant_get_child(tuple, 4, "m&s", &appId);
  if (appId != nullptr) request.appId = appId;
  return request;
}

// Drops a report that repeats a state.
void print(const char* event, GVariant* value) {
  static std::string last;
  const Variant whole(g_variant_ref_sink(g_variant_new("(sv)", event, value)));
  const Owned<char, g_free> line(g_variant_print(whole.get(), TRUE));
  const bool isState = std::string_view(event) == kNeedsKey || std::string_view(event) == kNeedsTouch;
  if (isState && last == line.get()) return;
  last = line.get();
  std::puts(line.get());
  std::fflush(stdout);
}

// - A key says how many credentials it has, and libfido2 takes memory for all of them.
// - A crash collector gets the PIN of a process that may be dumped, also where core files are limited to 0 bytes
//   (core(5), "Piping core dumps to a program").
void protectMemory() {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  constexpr rlim_t kMaxMemory = 512 << 20;
  const rlimit limit{kMaxMemory, kMaxMemory};
  (void)setrlimit(RLIMIT_AS, &limit);
  (void)prctl(PR_SET_DUMPABLE, 0);
#endif
}

}  // namespace

int main() {
  protectMemory();
  fido_init(FIDO_DISABLE_U2F_FALLBACK);  // a CTAP 2 key that fails is not one that can do less
  const std::string line = Answers::readRequest();
  const Variant whole(g_variant_parse(G_VARIANT_TYPE_VARIANT, line.c_str(), nullptr, nullptr, nullptr));
  if (!whole) return EXIT_FAILURE;
  const Variant request(g_variant_get_variant(whole.get()));
  Answers answers;
  Ceremony ceremony(answers, print);
  if (g_variant_is_of_type(request.get(), G_VARIANT_TYPE(kRegistrationType))) {
    ceremony.run(registrationOf(request.get()));
  } else if (g_variant_is_of_type(request.get(), G_VARIANT_TYPE(kAssertionType))) {
    ceremony.run(assertionOf(request.get()));
  }
  _exit(EXIT_SUCCESS);  // `answers` has a thread
}
