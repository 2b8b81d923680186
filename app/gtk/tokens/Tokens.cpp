#include "app/gtk/tokens/Tokens.h"

#include <unistd.h>

#include <utility>

#include "app/gtk/OwnProgram.h"

namespace {

constexpr guint kListTimeoutSeconds = 20;
constexpr guint kOpenTimeoutSeconds = 120;

std::vector<TokenCertificate> certificatesIn(const std::string& text) {
  std::vector<TokenCertificate> certificates;
  const Owned<GVariant, g_variant_unref> all(
      g_variant_parse(G_VARIANT_TYPE(kCertificatesType), text.c_str(), nullptr, nullptr, nullptr));
  if (!all) return certificates;
  for (gsize i = 0; i < g_variant_n_children(all.get()); ++i) {
    const char* name = nullptr;
    const char* issuer = nullptr;
    const char* token = nullptr;
    const char* pem = nullptr;
    const char* key = nullptr;
    gint64 expiry = 0;
    guint32 login = 0;
    g_variant_get_child(all.get(), i, "(&s&s&sx&s&su)", &name, &issuer, &token, &expiry, &pem, &key, &login);
    certificates.push_back({name, issuer, token, expiry, pem, key, static_cast<Login>(login)});
  }
  return certificates;
}

}  // namespace

void Tokens::list(std::function<void(std::vector<TokenCertificate>)> onListed) {
  run("list", "", "", kListTimeoutSeconds,
      [onListed = std::move(onListed)](int, const std::string& output) { onListed(certificatesIn(output)); });
}

void Tokens::open(const std::string& key, const std::string& pin, std::function<void(Opening)> onOpened) {
  run("open", key, pin, kOpenTimeoutSeconds, [onOpened = std::move(onOpened)](int status, const std::string&) {
    onOpened(status >= 0 && status <= static_cast<int>(Opening::kLocked) ? static_cast<Opening>(status)
                                                                         : Opening::kGone);
  });
}

void Tokens::cancel() {
  if (timeout_ != 0) g_source_remove(std::exchange(timeout_, 0));
  onEnded_ = nullptr;
  if (!process_) return;
  g_subprocess_force_exit(process_.get());
  g_cancellable_cancel(cancellable_.get());
  process_.reset();
}

void Tokens::run(const char* command, const std::string& key, const std::string& input, guint timeoutSeconds,
                 OnEnded onEnded) {
  cancel();
  constexpr int kFlags =
      G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_SILENCE;
  onEnded_ = std::move(onEnded);
  timeout_ = g_timeout_add_seconds(timeoutSeconds, onTimeout, this);
  process_.reset(g_subprocess_new(static_cast<GSubprocessFlags>(kFlags), nullptr,
                                  ownProgram("svo-signin-tokens").c_str(), std::to_string(getpid()).c_str(), command,
                                  key.c_str(), nullptr));
  if (!process_) {
    g_source_remove(timeout_);
    timeout_ = g_idle_add(onTimeout, this);  // the caller does not expect a result yet
    return;
  }
  // The pipe holds more than a PIN, so that this neither waits nor needs a copy.
  (void)g_output_stream_write_all(g_subprocess_get_stdin_pipe(process_.get()), input.data(), input.size(), nullptr,
                                  nullptr, nullptr);
  const Owned<GBytes, g_bytes_unref> nothingMore(g_bytes_new(nullptr, 0));
  cancellable_.reset(g_cancellable_new());
  g_subprocess_communicate_async(process_.get(), nothingMore.get(), cancellable_.get(), onEnd, this);
}

void Tokens::end(int status, const std::string& output) {
  const OnEnded onEnded = std::exchange(onEnded_, nullptr);
  cancel();
  onEnded(status, output);
}

void Tokens::onEnd(GObject* process, GAsyncResult* result, gpointer self) {
  GBytes* bytes = nullptr;
  GError* failure = nullptr;
  (void)g_subprocess_communicate_finish(G_SUBPROCESS(process), result, &bytes, nullptr, &failure);
  const Owned<GBytes, g_bytes_unref> owned(bytes);
  const Owned<GError, g_error_free> error(failure);
  if (g_error_matches(failure, G_IO_ERROR, G_IO_ERROR_CANCELLED)) return;  // `self` may not exist any more

  gsize size = 0;
  const auto* const text = bytes == nullptr ? "" : static_cast<const char*>(g_bytes_get_data(bytes, &size));
  const bool exited = failure == nullptr && g_subprocess_get_if_exited(G_SUBPROCESS(process));
  static_cast<Tokens*>(self)->end(exited ? g_subprocess_get_exit_status(G_SUBPROCESS(process)) : -1,
                                  std::string(text, size));
}

// Does not wait for the end of a process that cannot be killed, such as one in a driver.
gboolean Tokens::onTimeout(gpointer self) {
  auto* const tokens = static_cast<Tokens*>(self);
  tokens->timeout_ = 0;
  tokens->end(-1, "");
  return G_SOURCE_REMOVE;
}
