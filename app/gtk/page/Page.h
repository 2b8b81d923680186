// The web view of the window, and everything that belongs to it: session, settings, guards, prompts, site and loads.
//
// - Connects the signals that report something. `Guards` connects those whose handlers only refuse a request or limit
//   what the page shows.
// - Reports loads, clicked links and requests for new windows to `SignInFlow`.
// - Shows the page's site and its progress in the strip.
// - A page that came over the network cannot navigate to a file of this machine.
// - A page may open three addresses outside and show five prompts, and as many again after each click, Return or Space.
//   Further requests are dropped.
// - The list of a select field opens once for each click, Return, Space, Up or Down, inside the page's area.
// - A page cannot navigate to a web address of more than 256 KiB, four times what the launcher's pipe holds.
// - A page that uses more than two such addresses, or needs too much memory, is stopped. That is a failed load.
// - A page that is taller than its area is shown smaller. At a zoom that the user chose, its main frame can be
// scrolled.
//
// Main thread only; needs an open display.

#pragma once

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <functional>
#include <string>
#include <utility>

#include "app/SignInFlow.h"
#include "app/WindowKeys.h"
#include "app/gtk/Glib.h"
#include "app/gtk/KeyEvents.h"
#include "app/gtk/MemoryWatch.h"
#include "app/gtk/Strip.h"
#include "app/gtk/load/GlibIdleTimer.h"
#include "app/gtk/load/LoadEvent.h"
#include "app/gtk/load/LoadTracker.h"
#include "app/gtk/load/NetworkProcessWatch.h"
#include "app/gtk/page/CommitDelay.h"
#include "app/gtk/page/Cover.h"
#include "app/gtk/page/Credentials.h"
#include "app/gtk/page/FreshPress.h"
#include "app/gtk/page/MainFrame.h"
#include "app/gtk/page/OptionList.h"
#include "app/gtk/page/PageFit.h"
#include "app/gtk/page/PagePrompts.h"
#include "app/gtk/page/RequestLimit.h"
#include "app/gtk/page/Site.h"

class Page {
 public:
  // Shows prompts in `overlay`. `strip` and `flow` must outlive the page. `sandboxed` puts the web process into
  // WebKit's sandbox, which must work on this machine.
  Page(GtkOverlay* overlay, Strip& strip, SignInFlow& flow, bool sandboxed);
  ~Page();

  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  // The web view.
  GtkWidget* widget() const { return GTK_WIDGET(view_); }

  // The page's area of the window, which contains the web view; the page destroys it.
  GtkWidget* area() const { return GTK_WIDGET(cover_.area()); }

  // Loads HTML text under `spinnerHTMLBaseURL`.
  void loadHTML(const std::string& html);
  void loadAddress(const std::string& address);

  // Opens an address with the user's default program, if its scheme and the page's limit allow that.
  void openOutside(const std::string& address);

  // Stops the main frame of every page from scrolling, except at a zoom that the user chose.
  void forbidScrolling() { fit_.forbidScrolling(); }

  // Does nothing while a prompt is shown.
  void edit(EditingCommand command);

  // Multiplies the zoom, within 50 % to 300 %.
  void zoomBy(double factor) { fit_.zoomBy(factor); }

  // Returns to the zoom at which the page fits, and to its top.
  void resetZoom() { fit_.resetZoom(); }

  // Also passes each load event to `observer`, before it is interpreted. For recording traces.
  void observeLoads(std::function<void(const LoadEvent&)> observer) { observer_ = std::move(observer); }

 private:
  static void onLoadChanged(WebKitWebView*, WebKitLoadEvent step, Page* self);
  static gboolean onLoadFailed(WebKitWebView*, WebKitLoadEvent step, char* address, GError* error, Page* self);
  static gboolean onLoadFailedWithTlsErrors(WebKitWebView*, char* address, GTlsCertificate*, GTlsCertificateFlags flags,
                                            Page* self);
  static void onIsLoading(WebKitWebView*, GParamSpec*, Page* self);
  static void onProgress(WebKitWebView*, GParamSpec*, Page* self);
  static void onAddress(WebKitWebView*, GParamSpec*, Page* self);
  static void onProcessEnded(WebKitWebView*, WebKitWebProcessTerminationReason, Page* self);
  static gboolean onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                 Page* self);
  static GtkWidget* onCreate(WebKitWebView*, WebKitNavigationAction* action, Page* self);
  static void onDownloadStarted(WebKitWebContext*, WebKitDownload* download, Page* self);

  static void onResourceStarted(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest* request, Page* self);
  static void onResourceSent(WebKitWebResource* resource, WebKitURIRequest* request, WebKitURIResponse* redirect,
                             Page* self);
  static void onResourceResponse(WebKitWebResource* resource, GParamSpec*, Page* self);
  static void onResourceFinished(WebKitWebResource* resource, Page* self);
  static void onResourceFailed(WebKitWebResource* resource, GError* error, Page* self);
  static void onResourceFailedWithTlsErrors(WebKitWebResource* resource, GTlsCertificate*, GTlsCertificateFlags flags,
                                            Page* self);

  static gboolean onScriptDialog(WebKitWebView*, WebKitScriptDialog* dialog, Page* self);
  static gboolean onAuthenticate(WebKitWebView*, WebKitAuthenticationRequest* request, Page* self);
  static gboolean onOptionMenu(WebKitWebView*, WebKitOptionMenu* menu, GdkEvent* event, GdkRectangle* field,
                               Page* self);
  static gboolean onUserInput(GtkWidget*, GdkEvent* event, Page* self);

  void connectSignals();
  gboolean onResponse(WebKitResponsePolicyDecision* response);
  void report(const LoadEvent& event);
  void updateSite(const std::string& address);
  void showProgress();
  bool mayNavigate(const std::string& address) const;
  void stopPage();
  void limitLength(const std::string& address);

  Strip& strip_;
  SignInFlow& flow_;
  Owned<WebKitWebContext> context_;
  Owned<WebKitUserContentManager> content_;
  WebKitWebView* view_;
  Cover cover_;
  PageFit fit_;
  OptionList options_;
  KeyPresses keyPresses_;
  FreshPress listPress_;
  Site site_;  // of the page that is shown
  MainFrame mainFrame_;
  CommitDelay commit_;
  RequestLimit opened_{3};
  RequestLimit longAddresses_{2};
  bool stopped_ = false;
  GlibIdleTimer idleTimer_;
  LoadTracker tracker_;
  NetworkProcessWatch networkProcess_;
  MemoryWatch memory_;
  PagePrompts prompts_;
  Credentials credentials_;
  std::function<void(const LoadEvent&)> observer_;
};
