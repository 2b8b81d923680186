#include "app/gtk/keys/SecurityKeys.h"

#include <string.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "app/gtk/OwnProgram.h"
#include "app/gtk/keys/Protocol.h"

namespace {

constexpr glong kMinPinCharacters = 4;

bool mayBePin(const char* text) {
  return strlen(text) <= kMaxKeyPin && g_utf8_strlen(text, -1) >= kMinPinCharacters && strchr(text, '\n') == nullptr;
}

bool contains(const std::vector<Bytes>& all, const Bytes& one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

GVariant* listOf(const std::vector<Bytes>& all) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("aay"));
  for (const Bytes& each : all)
    g_variant_builder_add_value(&list, variantOf(each));
  return g_variant_builder_end(&list);
}

GVariant* requestOf(const Registration& from) {
  GVariantBuilder algorithms;
  g_variant_builder_init(&algorithms, G_VARIANT_TYPE("ai"));
  for (const int each : from.algorithms)
    g_variant_builder_add(&algorithms, "i", each);
  return g_variant_new("(ss@ayss@ayai@aayuu)", from.rpId.c_str(), from.rpName.c_str(), variantOf(from.userId),
                       from.userName.c_str(), from.userDisplayName.c_str(), variantOf(from.clientDataHash), &algorithms,
                       listOf(from.excluded), static_cast<guint32>(from.residentKey),
                       static_cast<guint32>(from.userVerification));
}

GVariant* requestOf(const Assertion& from) {
  return g_variant_new("(s@ay@aayums)", from.rpId.c_str(), variantOf(from.clientDataHash), listOf(from.allowed),
                       static_cast<guint32>(from.userVerification), from.appId ? from.appId->c_str() : nullptr);
}

std::vector<KeyAccount> accountsOf(GVariant* list) {
  std::vector<KeyAccount> accounts;
  for (gsize i = 0; i < g_variant_n_children(list); ++i) {
    const char* name = nullptr;
    const char* displayName = nullptr;
    g_variant_get_child(list, i, "(&s&s)", &name, &displayName);
    accounts.push_back({name, displayName});
  }
  return accounts;
}

void onWritten(GObject* stream, GAsyncResult* result, gpointer text) {
  (void)g_output_stream_write_all_finish(G_OUTPUT_STREAM(stream), result, nullptr, nullptr);
  g_free(text);
}

}  // namespace

void SecurityKeys::start(Registration registration, std::chrono::milliseconds timeout, Events events) {
  GVariant* const request = requestOf(registration);
  request_ = std::move(registration);
  run(request, timeout, std::move(events));
}

void SecurityKeys::start(Assertion assertion, std::chrono::milliseconds timeout, Events events) {
  GVariant* const request = requestOf(assertion);
  request_ = std::move(assertion);
  run(request, timeout, std::move(events));
}

void SecurityKeys::run(GVariant* request, std::chrono::milliseconds timeout, Events events) {
  cancel();
  const Variant whole(g_variant_ref_sink(g_variant_new_variant(request)));
  events_ = std::move(events);
  process_.reset(
      g_subprocess_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                     G_SUBPROCESS_FLAGS_STDERR_SILENCE),
                       nullptr, ownProgram("svo-signin-keys").c_str(), nullptr));
  if (!process_) timeout = {};  // the caller does not expect an event yet
  timeout_ = g_timeout_add(static_cast<guint>(timeout.count()), onTimeout, this);
  if (!process_) return;

  cancellable_.reset(g_cancellable_new());
  output_.reset(g_data_input_stream_new(g_subprocess_get_stdout_pipe(process_.get())));
  // Text, because a line cannot contain a byte with the value of a line break otherwise.
  const Owned<char, g_free> text(g_variant_print(whole.get(), TRUE));
  gchar* const line = g_strconcat(text.get(), "\n", nullptr);
  g_output_stream_write_all_async(g_subprocess_get_stdin_pipe(process_.get()), line, strlen(line), G_PRIORITY_DEFAULT,
                                  cancellable_.get(), onWritten, line);
  readLine();
}

// Normalized, as CTAP 2.1 (section 6.5.1) requires. GLib leaves copies of what it normalizes; ASCII needs none.
bool SecurityKeys::givePin(std::string pin) {
  const bool isAscii = g_str_is_ascii(pin.c_str()) != FALSE;
  const Owned<char, g_free> normalized(isAscii ? nullptr : g_utf8_normalize(pin.c_str(), -1, G_NORMALIZE_NFC));
  const char* const text = isAscii ? pin.c_str() : normalized.get();
  const bool isPin = text != nullptr && mayBePin(text);
  if (isPin) answer(text);
  explicit_bzero(pin.data(), pin.size());
  return isPin;
}

void SecurityKeys::chooseAccount(std::size_t index) {
  answer(std::to_string(index).c_str());
}

// The program waits for an answer, so that this does not block.
void SecurityKeys::answer(const char* text) {
  const guint32 question = std::exchange(question_, 0);
  if (question == 0) return;
  GOutputStream* const input = g_subprocess_get_stdin_pipe(process_.get());
  const std::string number = std::to_string(question) + " ";
  (void)g_output_stream_write_all(input, number.data(), number.size(), nullptr, nullptr, nullptr);
  (void)g_output_stream_write_all(input, text, strlen(text), nullptr, nullptr, nullptr);
  (void)g_output_stream_write_all(input, "\n", 1, nullptr, nullptr, nullptr);
}

void SecurityKeys::cancel() {
  (void)end();
}

SecurityKeys::Events SecurityKeys::end() {
  if (timeout_ != 0) g_source_remove(std::exchange(timeout_, 0));
  question_ = 0;
  if (process_) {
    g_cancellable_cancel(cancellable_.get());
    // The program ends with its input. While the request is being written it cannot be closed; then no key is in use.
    if (!g_output_stream_close(g_subprocess_get_stdin_pipe(process_.get()), nullptr, nullptr))
      g_subprocess_force_exit(process_.get());
    process_.reset();
  }
  return std::exchange(events_, {});
}

void SecurityKeys::fail(KeyError error) {
  const Events events = end();
  if (events.onFailed) events.onFailed(error);
}

void SecurityKeys::readLine() {
  g_data_input_stream_read_line_async(output_.get(), G_PRIORITY_DEFAULT, cancellable_.get(), onLine, this);
}

void SecurityKeys::onLine(GObject* output, GAsyncResult* result, gpointer self) {
  GError* failure = nullptr;
  const Owned<char, g_free> line(
      g_data_input_stream_read_line_finish_utf8(G_DATA_INPUT_STREAM(output), result, nullptr, &failure));
  const Owned<GError, g_error_free> error(failure);
  if (g_error_matches(failure, G_IO_ERROR, G_IO_ERROR_CANCELLED)) return;  // `self` may not exist any more

  auto* const keys = static_cast<SecurityKeys*>(self);
  if (!line) return keys->fail(KeyError::kNotAllowed);
  keys->receive(line.get());
  const bool isSameCeremony = keys->process_ && keys->output_.get() == G_DATA_INPUT_STREAM(output);
  if (isSameCeremony) keys->readLine();
}

// An event may end the ceremony, and with it `events_`.
void SecurityKeys::receive(const std::string& line) {
  const Variant event(g_variant_parse(G_VARIANT_TYPE(kEventType), line.c_str(), nullptr, nullptr, nullptr));
  if (!event) return fail(KeyError::kNotAllowed);
  const char* name = nullptr;
  GVariant* content = nullptr;
  g_variant_get(event.get(), "(&sv)", &name, &content);
  const Variant value(content);
  const auto is = [name, content](const char* expected, const char* type) {
    return strcmp(name, expected) == 0 && g_variant_is_of_type(content, G_VARIANT_TYPE(type));
  };

  question_ = 0;
  const Events events = events_;
  if (is(kNeedsKey, "b")) return events.onNeedsKey(g_variant_get_boolean(content) != FALSE);
  if (is(kNeedsTouch, "b")) return events.onNeedsTouch();
  if (is(kPinBlocked, "b")) return events.onPinBlocked(g_variant_get_boolean(content) != FALSE);
  if (is(kNeedsPin, "(uib)")) {
    gint32 triesLeft = 0;
    gboolean isWrong = FALSE;
    g_variant_get(content, "(uib)", &question_, &triesLeft, &isWrong);
    return events.onNeedsPin(triesLeft < 0 ? std::nullopt : std::optional<int>(triesLeft), isWrong != FALSE);
  }
  if (is(kHasAccounts, "(ua(ss))")) {
    g_variant_get_child(content, 0, "u", &question_);
    return events.onAccounts(accountsOf(Variant(g_variant_get_child_value(content, 1)).get()));
  }
  if (is(kRegistered, kRegisteredType) && std::holds_alternative<Registration>(request_))
    return receiveRegistration(content);
  if (is(kAsserted, kAssertedType) && std::holds_alternative<Assertion>(request_)) return receiveAssertion(content);
  // What a key says against an assertion has one name (W3C Web Authentication, Level 2, section 5.1.4.1).
  const bool isError = is(kFailed, "u") && std::holds_alternative<Registration>(request_) &&
                       g_variant_get_uint32(content) <= static_cast<guint32>(KeyError::kNotSupported);
  fail(isError ? static_cast<KeyError>(g_variant_get_uint32(content)) : KeyError::kNotAllowed);
}

void SecurityKeys::receiveRegistration(GVariant* value) {
  const auto& request = std::get<Registration>(request_);
  const Bytes data = bytesIn(value, 1);
  gint32 algorithm = 0;
  gboolean isResident = FALSE;
  g_variant_get_child(value, 3, "i", &algorithm);
  g_variant_get_child(value, 4, "b", &isResident);
  const std::optional<Bytes> publicKey = publicKeyDer(algorithm, bytesIn(value, 2));
  RegistrationResult result;
  result.credentialId = bytesIn(value, 0);
  const bool isMade = publicKey && !result.credentialId.empty();
  if (!isMade || !isFor(sha256(request.rpId), request.userVerification, data)) return fail(KeyError::kNotAllowed);

  result.authenticatorData = withoutAaguid(data);
  result.attestationObject = attestationObject(result.authenticatorData);
  result.publicKeyDer = *publicKey;
  result.algorithm = algorithm;
  if (request.credProps) result.residentKey = isResident != FALSE;
  const Variant transports(g_variant_get_child_value(value, 5));
  for (gsize i = 0; i < g_variant_n_children(transports.get()); ++i) {
    const char* transport = nullptr;
    g_variant_get_child(transports.get(), i, "&s", &transport);
    result.transports.emplace_back(transport);
  }
  end().onRegistered(std::move(result));
}

void SecurityKeys::receiveAssertion(GVariant* value) {
  const auto& request = std::get<Assertion>(request_);
  AssertionResult result;
  result.credentialId = bytesIn(value, 0);
  result.authenticatorData = bytesIn(value, 1);
  result.signature = bytesIn(value, 2);
  result.userHandle = bytesIn(value, 3);
  gboolean usedAppId = FALSE;
  g_variant_get_child(value, 4, "b", &usedAppId);
  result.usedAppId = usedAppId != FALSE && request.appId;
  const std::string& relyingParty = result.usedAppId ? *request.appId : request.rpId;
  const bool isWhole = !result.credentialId.empty() && !result.signature.empty();
  const bool isAllowed = request.allowed.empty() || contains(request.allowed, result.credentialId);
  if (!isWhole || !isAllowed || !isFor(sha256(relyingParty), request.userVerification, result.authenticatorData))
    return fail(KeyError::kNotAllowed);
  end().onAsserted(std::move(result));
}

gboolean SecurityKeys::onTimeout(gpointer self) {
  auto* const keys = static_cast<SecurityKeys*>(self);
  keys->timeout_ = 0;
  keys->fail(KeyError::kNotAllowed);
  return G_SOURCE_REMOVE;
}
