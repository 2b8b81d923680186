// What a page may ask a person outside its own area: script dialogs, and the name and password of HTTP authentication
// (RFC 9110, section 11).
//
// Each is a question on the window's sheet that names the site. WebKit does not say which frame shows a dialog, so its
// heading speaks for the page and what is embedded in it. A page that asks before it is left is left without asking:
// nothing on a sign-in page is worth a trap. Names and passwords go to the site that asked and are kept in memory for
// this run alone. What a page has asked goes with the page. Client certificates are not offered. Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include <functional>

#include "app/gtk/Allowance.h"
#include "app/gtk/LoadEvents.h"
#include "app/gtk/Sheet.h"
#include "app/gtk/Site.h"

class PageDialogs {
 public:
  // `site` tells whose page is shown, `events` hears when a person is asked and has answered. A page that has used up
  // `allowance` gets its dialogs answered as though the person had declined. What is referred to must outlive this
  // object, and this object the web view's signals.
  PageDialogs(WebKitWebView* view, Sheet& sheet, Allowance& allowance, std::function<Site()> site, LoadEvents& events);

  PageDialogs(const PageDialogs&) = delete;
  PageDialogs& operator=(const PageDialogs&) = delete;

 private:
  static void onLoadChanged(WebKitWebView*, WebKitLoadEvent step, PageDialogs* self);
  static gboolean onScriptDialog(WebKitWebView*, WebKitScriptDialog* dialog, PageDialogs* self);
  static gboolean onAuthenticate(WebKitWebView*, WebKitAuthenticationRequest* request, PageDialogs* self);
  Sheet::Number ask(Question question, std::function<void(const Reply&)> onReply);

  Sheet& sheet_;
  Allowance& allowance_;
  std::function<Site()> site_;
  LoadEvents& events_;
};
