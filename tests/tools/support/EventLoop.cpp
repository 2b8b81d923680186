#include "tests/tools/support/EventLoop.h"

#include <glib.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace tools {
namespace {

class Timeout {
 public:
  explicit Timeout(std::chrono::milliseconds after) {
    source_ = g_timeout_source_new(static_cast<guint>(after.count()));
    g_source_set_callback(source_, &Timeout::expire, this, nullptr);
    g_source_attach(source_, nullptr);
  }
  ~Timeout() {
    g_source_destroy(source_);
    g_source_unref(source_);
  }
  Timeout(const Timeout&) = delete;
  Timeout& operator=(const Timeout&) = delete;

  bool expired() const { return expired_; }

 private:
  static gboolean expire(gpointer self) {
    static_cast<Timeout*>(self)->expired_ = true;
    return G_SOURCE_CONTINUE;
  }

  GSource* source_;
  bool expired_ = false;
};

}  // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
  const Timeout timer(timeout);
  while (!condition()) {
    if (timer.expired()) return false;
    g_main_context_iteration(nullptr, TRUE);
  }
  return true;
}

bool waitUntilReadable(int fd, std::chrono::milliseconds timeout) {
  pollfd event = {fd, POLLIN, 0};
  return TEMP_FAILURE_RETRY(poll(&event, 1, static_cast<int>(timeout.count()))) == 1;
}

}  // namespace tools
