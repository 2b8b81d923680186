#include "tests/tools/support/EventLoop.h"

#include <glib.h>

namespace tools {
namespace {

class Alarm {
 public:
  explicit Alarm(std::chrono::milliseconds after) {
    source_ = g_timeout_source_new(static_cast<guint>(after.count()));
    g_source_set_callback(source_, &Alarm::ring, this, nullptr);
    g_source_attach(source_, nullptr);
  }
  ~Alarm() {
    g_source_destroy(source_);
    g_source_unref(source_);
  }
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;

  bool rang() const { return rang_; }

 private:
  static gboolean ring(gpointer self) {
    static_cast<Alarm*>(self)->rang_ = true;
    return G_SOURCE_CONTINUE;
  }

  GSource* source_;
  bool rang_ = false;
};

}  // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
  const Alarm alarm(timeout);
  while (!condition()) {
    if (alarm.rang()) return false;
    g_main_context_iteration(nullptr, TRUE);
  }
  return true;
}

}  // namespace tools
