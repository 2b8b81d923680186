// Connects a web view's load signals to `LoadEvents`, one call a signal, and keeps WebKit from showing pages of its own
// in place of a failed load. Main thread only.

#pragma once

#include <webkit2/webkit2.h>

#include "app/gtk/LoadEvents.h"

// `events` must outlive the web view.
void connectLoadSignals(WebKitWebView* view, LoadEvents& events);
