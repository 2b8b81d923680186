// Delays the commit of a page until 30 ms after the request of its address, from WebKitGTK 2.52 on.
//
// WebKit starts a process for a page of another site. In 2.54, if the page is committed before the next frame of the
// page before it and shows a dialog before it has painted, that process never paints again. 2.50 has no such defect,
// and few servers respond so fast. A delay of 8 ms was too short, one of 10 ms long enough.
//
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include "app/gtk/Glib.h"

class CommitDelay {
 public:
  // `view` must outlive this object.
  explicit CommitDelay(WebKitWebView* view) : view_(view) {}
  ~CommitDelay();

  CommitDelay(const CommitDelay&) = delete;
  CommitDelay& operator=(const CommitDelay&) = delete;

  // The main frame has requested an address: the first request of a load, or one after a redirect.
  void requested() { requested_ = g_get_monotonic_time(); }

  // Whether the response comes too early. If so, WebKit decides on it later; the caller does not.
  bool delays(WebKitPolicyDecision* response);

 private:
  static gboolean onDelayOver(gpointer self);
  void decide();

  WebKitWebView* view_;
  Owned<WebKitPolicyDecision, g_object_unref> response_;
  gint64 requested_ = 0;  // monotonic time in microseconds
  guint timer_ = 0;
};
