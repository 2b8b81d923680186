// Creates the web view and its session. Pages get scripts and images, nothing more.
//
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include "app/gtk/Glib.h"

// The world of the program's own scripts. Pages cannot reach what is defined there.
inline constexpr char kScriptWorld[] = "svo-signin";

using StyleSheet = Owned<WebKitUserStyleSheet, webkit_user_style_sheet_unref>;

// An ephemeral session: no cookie, cache or storage is written to disk. Where a private folder has been created, a
// session in that folder, which authenticates by Kerberos tickets. Cookies and passwords stay in memory.
//
// - Pages see the languages of the user's locale in its order, or "en-US" if it names none ("C", "POSIX").
// - `sandboxed` puts web processes into WebKit's sandbox, which must work on this machine.
Owned<WebKitWebContext> newContext(bool sandboxed);

// Returns a floating reference. The web view expands.
WebKitWebView* newWebView(WebKitWebContext* context, WebKitUserContentManager* content);

// Removes scrolling and scroll bars from the main frame.
StyleSheet newStyleSheetWithoutScrolling();
