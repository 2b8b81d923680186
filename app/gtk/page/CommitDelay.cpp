#include "app/gtk/page/CommitDelay.h"

#include <utility>

namespace {

constexpr gint64 kMilliseconds = 30;
constexpr guint kFirstMinorVersion = 52;

}  // namespace

CommitDelay::~CommitDelay() {
  if (timer_ != 0) g_source_remove(timer_);
}

bool CommitDelay::delays(WebKitPolicyDecision* response) {
  if (webkit_get_major_version() == 2 && webkit_get_minor_version() < kFirstMinorVersion) return false;
  const gint64 passed = (g_get_monotonic_time() - requested_) / 1000;
  if (passed >= kMilliseconds) return false;
  if (timer_ != 0) g_source_remove(timer_);
  decide();
  response_.reset(WEBKIT_POLICY_DECISION(g_object_ref(response)));
  timer_ = g_timeout_add(static_cast<guint>(kMilliseconds - passed), onDelayOver, this);
  return true;
}

// As WebKit does without a handler: a page is shown, everything else is downloaded or ignored.
void CommitDelay::decide() {
  if (const auto response = std::move(response_))
    WEBKIT_WEB_VIEW_GET_CLASS(view_)->decide_policy(view_, response.get(), WEBKIT_POLICY_DECISION_TYPE_RESPONSE);
}

gboolean CommitDelay::onDelayOver(gpointer self) {
  auto* const delay = static_cast<CommitDelay*>(self);
  delay->timer_ = 0;
  delay->decide();
  return G_SOURCE_REMOVE;
}
