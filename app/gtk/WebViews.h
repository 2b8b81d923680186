// Makes web views as a sign-in needs them: with scripts and images, and with nothing that a page could reach the
// machine by, draw outside its area with, or leave behind. Main thread.

#pragma once

#include <webkit2/webkit2.h>

// A context whose session is ephemeral: no cookie, cache or storage reaches the disk, and no download is let through.
// Pages see the languages of the user's locale, in its order, and "en-US" where it names none ("C", "POSIX").
// `sandboxed` puts page processes into WebKit's sandbox, which must work on this machine. The caller owns it.
WebKitWebContext* newContext(bool sandboxed);

// A web view that takes what room there is; a floating reference, as of every new widget.
WebKitWebView* newWebView(WebKitWebContext* context, WebKitUserContentManager* content);
