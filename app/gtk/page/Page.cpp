#include "app/gtk/page/Page.h"

#include <cstddef>

#include "app/Address.h"
#include "app/SpinnerPage.h"
#include "app/gtk/KeyEvents.h"
#include "app/gtk/page/ClipboardGuard.h"
#include "app/gtk/page/Guards.h"
#include "app/gtk/page/Settings.h"
#include "applog/Logger.h"

namespace {

using Kind = LoadEvent::Kind;

constexpr std::size_t kMaxAddressLength = 256 << 10;
constexpr char kResourceNumber[] = "svo-resource-number";

std::string addressOf(WebKitWebView* view) {
  return orEmpty(webkit_web_view_get_uri(view));
}

std::string addressOf(WebKitURIRequest* request) {
  return orEmpty(webkit_uri_request_get_uri(request));
}

std::string addressOf(WebKitWebResource* resource) {
  return orEmpty(webkit_web_resource_get_uri(resource));
}

LoadError errorOf(const GError* error) {
  return {orEmpty(g_quark_to_string(error->domain)), error->code};
}

LoadError errorOf(GTlsCertificateFlags flags) {
  return {"tls-certificate", static_cast<int>(flags)};
}

Kind kindOf(WebKitLoadEvent step) {
  switch (step) {
    case WEBKIT_LOAD_STARTED:
      return Kind::kStarted;
    case WEBKIT_LOAD_REDIRECTED:
      return Kind::kRedirected;
    case WEBKIT_LOAD_COMMITTED:
      return Kind::kCommitted;
    case WEBKIT_LOAD_FINISHED:
      break;
  }
  return Kind::kFinished;
}

// Addresses with other schemes may contain a whole document.
bool isTooLong(const std::string& address) {
  return address.size() > kMaxAddressLength && isWebAddress(address);
}

unsigned numberOf(WebKitWebResource* resource) {
  return GPOINTER_TO_UINT(g_object_get_data(G_OBJECT(resource), kResourceNumber));
}

bool isOverTls(WebKitWebView* view) {
  GTlsCertificate* certificate = nullptr;
  GTlsCertificateFlags errors{};
  return webkit_web_view_get_tls_info(view, &certificate, &errors) && errors == 0;
}

gboolean closeMenu(gpointer menu) {
  webkit_option_menu_close(WEBKIT_OPTION_MENU(menu));
  return G_SOURCE_REMOVE;
}

const char* nameOf(EditingCommand command) {
  switch (command) {
    case EditingCommand::kSelectAll:
      return WEBKIT_EDITING_COMMAND_SELECT_ALL;
    case EditingCommand::kCopy:
      return WEBKIT_EDITING_COMMAND_COPY;
    case EditingCommand::kPaste:
      return WEBKIT_EDITING_COMMAND_PASTE;
    case EditingCommand::kCut:
      return WEBKIT_EDITING_COMMAND_CUT;
    case EditingCommand::kUndo:
      break;
  }
  return WEBKIT_EDITING_COMMAND_UNDO;
}

// From WebKitGTK 2.52 on, cancelling many downloads before this signal crashes the network process.
gboolean onDecideDestination(WebKitDownload* download, char*, gpointer) {
  webkit_download_cancel(download);
  return TRUE;
}

}  // namespace

Page::Page(GtkOverlay* overlay, Strip& strip, SignInFlow& flow, bool sandboxed)
    : strip_(strip),
      flow_(flow),
      context_(newContext(sandboxed)),
      content_(webkit_user_content_manager_new()),
      view_(newWebView(context_.get(), content_.get())),
      cover_(view_, content_.get()),
      fit_(view_, content_.get(), [this](bool hidden) { strip_.showPartHidden(hidden); }),
      options_(cover_.area(), widget()),
      commit_(view_),
      idleTimer_([this] { tracker_.timedOut(); }),
      tracker_(flow, idleTimer_),
      networkProcess_([this] {
        report({Kind::kProcessEnded, {}, 0, {}});
      }),
      memory_([this] { stopPage(); }),
      prompts_(overlay, widget(), content_.get(),
               [this](bool shown) {
                 report({shown ? Kind::kPromptShown : Kind::kPromptClosed, {}, 0, {}});
               }),
      credentials_(content_.get(), prompts_) {
  connectSignals();
}

// Terminates the web process first: closing its dialogs would let the page continue, and a busy process would outlive
// the window.
Page::~Page() {
  webkit_web_view_terminate_web_process(view_);
  prompts_.close();
  options_.close();
  gtk_widget_destroy(area());
}

void Page::connectSignals() {
  g_signal_connect(view_, "load-changed", G_CALLBACK(onLoadChanged), this);
  g_signal_connect(view_, "load-failed", G_CALLBACK(onLoadFailed), this);
  g_signal_connect(view_, "load-failed-with-tls-errors", G_CALLBACK(onLoadFailedWithTlsErrors), this);
  g_signal_connect(view_, "notify::is-loading", G_CALLBACK(onIsLoading), this);
  g_signal_connect(view_, "notify::estimated-load-progress", G_CALLBACK(onProgress), this);
  g_signal_connect(view_, "notify::uri", G_CALLBACK(onAddress), this);
  g_signal_connect(view_, "web-process-terminated", G_CALLBACK(onProcessEnded), this);
  g_signal_connect(view_, "resource-load-started", G_CALLBACK(onResourceStarted), this);
  g_signal_connect(context_.get(), "download-started", G_CALLBACK(onDownloadStarted), this);

  g_signal_connect(view_, "decide-policy", G_CALLBACK(onDecidePolicy), this);
  g_signal_connect(view_, "create", G_CALLBACK(onCreate), this);

  g_signal_connect(view_, "script-dialog", G_CALLBACK(onScriptDialog), this);
  g_signal_connect(view_, "authenticate", G_CALLBACK(onAuthenticate), this);
  g_signal_connect(view_, "show-option-menu", G_CALLBACK(onOptionMenu), this);

  for (const char* const input : {"key-press-event", "button-press-event", "touch-event"})
    g_signal_connect(view_, input, G_CALLBACK(onUserInput), this);
  connectGuards(view_);
}

void Page::loadHTML(const std::string& html) {
  webkit_web_view_load_html(view_, html.c_str(), spinnerHTMLBaseURL.c_str());
  networkProcess_.start();
}

// The sign-in page follows the program's own page. WebKit ignores an address that is not UTF-8; its text is not logged.
void Page::loadAddress(const std::string& address) {
  if (site_.kind == Site::Kind::kNone) tracker_.awaitPage(validUtf8(address) == address ? address : "");
  mainFrame_.requested(address);
  fit_.start();
  webkit_web_view_load_uri(view_, address.c_str());
}

void Page::openOutside(const std::string& address) {
  if (!mayOpenOutside(address) || !opened_.take()) return;
  g_app_info_launch_default_for_uri_async(address.c_str(), nullptr, nullptr, nullptr, nullptr);
}

void Page::edit(EditingCommand command) {
  if (!gtk_widget_is_sensitive(widget())) return;
  if (command == EditingCommand::kCopy || command == EditingCommand::kCut) permitCopy();
  webkit_web_view_execute_editing_command(view_, nameOf(command));
}

void Page::report(const LoadEvent& event) {
  if (observer_) observer_(event);
  tracker_.handle(event);
}

void Page::updateSite(const std::string& address) {
  site_ = address == spinnerHTMLBaseURL ? Site() : siteOf(address, isOverTls(view_));
  strip_.show(site_);
}

void Page::showProgress() {
  if (!webkit_web_view_is_loading(view_)) return strip_.hideProgress();
  strip_.showProgress(webkit_web_view_get_estimated_load_progress(view_));
}

void Page::stopPage() {
  if (std::exchange(stopped_, true)) return;
  Logger::getInstance()->logWarn("SVO", "The page was stopped: it needed too much memory");
  webkit_web_view_terminate_web_process(view_);
}

// WebKit keeps several copies of each address.
void Page::limitLength(const std::string& address) {
  if (isTooLong(address) && !longAddresses_.take()) stopPage();
}

// The launcher may name a file, and a file may link to another file. The engine's own resources have its privileges.
bool Page::mayNavigate(const std::string& address) const {
  if (isTooLong(address) || isEngineAddress(address)) return false;
  return !hasScheme(address, "file") || site_.kind == Site::Kind::kNone || site_.kind == Site::Kind::kFile;
}

void Page::onLoadChanged(WebKitWebView* view, WebKitLoadEvent step, Page* self) {
  const LoadEvent event{kindOf(step), addressOf(view), 0, {}};
  if (event.kind == Kind::kStarted) self->credentials_.navigationStarted();
  if (event.kind == Kind::kStarted || event.kind == Kind::kRedirected) self->commit_.requested();
  if (event.kind == Kind::kRedirected) self->mainFrame_.requested(event.address);
  if (event.kind == Kind::kCommitted) {
    self->mainFrame_.committed(event.address);
    self->updateSite(event.address);
    self->cover_.committed(event.address, self->site_.kind == Site::Kind::kNone);
    self->fit_.committed();
    self->options_.close();
    self->listPress_ = {};  // it was meant for the page before
    self->prompts_.pageCommitted();
    self->credentials_.committed(event.address, self->site_);
  }
  self->report(event);
}

// Returns TRUE: otherwise WebKit loads an error page, which finishes under the failed address.
gboolean Page::onLoadFailed(WebKitWebView*, WebKitLoadEvent step, char* address, GError* error, Page* self) {
  const Kind kind = step < WEBKIT_LOAD_COMMITTED ? Kind::kProvisionalFailed : Kind::kFailed;
  self->mainFrame_.failed(orEmpty(address));
  self->credentials_.navigationFailed();
  self->report({kind, orEmpty(address), 0, errorOf(error)});
  return TRUE;
}

gboolean Page::onLoadFailedWithTlsErrors(WebKitWebView*, char* address, GTlsCertificate*, GTlsCertificateFlags flags,
                                         Page* self) {
  self->mainFrame_.failed(orEmpty(address));
  self->credentials_.navigationFailed();
  self->report({Kind::kProvisionalFailed, orEmpty(address), 0, errorOf(flags)});
  return TRUE;
}

void Page::onIsLoading(WebKitWebView* view, GParamSpec*, Page* self) {
  self->showProgress();
  if (webkit_web_view_is_loading(view)) self->report({Kind::kRequested, addressOf(view), 0, {}});
}

void Page::onProgress(WebKitWebView*, GParamSpec*, Page* self) {
  self->showProgress();
  self->report({Kind::kProgress, {}, 0, {}});
}

// A page may change its address without a navigation (history.pushState).
void Page::onAddress(WebKitWebView* view, GParamSpec*, Page* self) {
  self->limitLength(addressOf(view));
}

void Page::onProcessEnded(WebKitWebView*, WebKitWebProcessTerminationReason, Page* self) {
  self->credentials_.processEnded();
  self->report({Kind::kProcessEnded, {}, 0, {}});
}

// A blob: document has no host, so the strip could not name its site. WebKit itself refuses data: addresses in the main
// frame.
gboolean Page::onResponse(WebKitResponsePolicyDecision* response) {
  if (!webkit_response_policy_decision_is_main_frame_main_resource(response)) return FALSE;
  const bool isBlob = hasScheme(addressOf(webkit_response_policy_decision_get_request(response)), "blob");
  if (isBlob) webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(response));
  prompts_.pageResponded();
  return isBlob || commit_.delays(WEBKIT_POLICY_DECISION(response)) ? TRUE : FALSE;
}

gboolean Page::onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                              Page* self) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return self->onResponse(WEBKIT_RESPONSE_POLICY_DECISION(decision));
  if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
  WebKitNavigationAction* const action =
      webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const std::string address = addressOf(webkit_navigation_action_get_request(action));
  self->limitLength(address);
  const bool isClick = webkit_navigation_action_get_navigation_type(action) == WEBKIT_NAVIGATION_TYPE_LINK_CLICKED &&
                       webkit_navigation_action_is_user_gesture(action);

  if (!self->mayNavigate(address) || (isClick && self->flow_.linkClicked(address))) {
    webkit_policy_decision_ignore(decision);
    return TRUE;
  }
  self->report({Kind::kNavigation, address, 0, {}});
  return FALSE;
}

// WebKit emits "create" exactly once for each request, from a link or from a script.
GtkWidget* Page::onCreate(WebKitWebView*, WebKitNavigationAction* action, Page* self) {
  const std::string address = addressOf(webkit_navigation_action_get_request(action));
  if (!address.empty()) self->flow_.newWindowRequested(address);
  return nullptr;
}

void Page::onDownloadStarted(WebKitWebContext*, WebKitDownload* download, Page* self) {
  g_signal_connect(download, "decide-destination", G_CALLBACK(onDecideDestination), nullptr);
  self->report({Kind::kDownloadStarted, addressOf(webkit_download_get_request(download)), 0, {}});
}

void Page::onResourceStarted(WebKitWebView* view, WebKitWebResource* resource, WebKitURIRequest* request, Page* self) {
  static unsigned lastNumber = 0;
  g_object_set_data(G_OBJECT(resource), kResourceNumber, GUINT_TO_POINTER(++lastNumber));
  g_signal_connect(resource, "sent-request", G_CALLBACK(onResourceSent), self);
  g_signal_connect(resource, "notify::response", G_CALLBACK(onResourceResponse), self);
  g_signal_connect(resource, "finished", G_CALLBACK(onResourceFinished), self);
  g_signal_connect(resource, "failed", G_CALLBACK(onResourceFailed), self);
  g_signal_connect(resource, "failed-with-tls-errors", G_CALLBACK(onResourceFailedWithTlsErrors), self);
  self->limitLength(addressOf(request));
  const bool isMain = webkit_web_view_get_main_resource(view) == resource;
  if (isMain) self->mainFrame_.requested(addressOf(request));
  self->report({isMain ? Kind::kMainResourceStarted : Kind::kResourceStarted, addressOf(request), lastNumber, {}});
}

void Page::onResourceSent(WebKitWebResource* resource, WebKitURIRequest* request, WebKitURIResponse* redirect,
                          Page* self) {
  if (redirect == nullptr) return;
  self->report({Kind::kResourceRedirected, addressOf(request), numberOf(resource), {}});
}

void Page::onResourceResponse(WebKitWebResource* resource, GParamSpec*, Page* self) {
  self->report({Kind::kResourceResponse, {}, numberOf(resource), {}});
}

void Page::onResourceFinished(WebKitWebResource* resource, Page* self) {
  self->report({Kind::kResourceFinished, {}, numberOf(resource), {}});
}

void Page::onResourceFailed(WebKitWebResource* resource, GError* error, Page* self) {
  self->report({Kind::kResourceFailed, addressOf(resource), numberOf(resource), errorOf(error)});
}

void Page::onResourceFailedWithTlsErrors(WebKitWebResource* resource, GTlsCertificate*, GTlsCertificateFlags flags,
                                         Page* self) {
  self->report({Kind::kResourceFailed, addressOf(resource), numberOf(resource), errorOf(flags)});
}

gboolean Page::onScriptDialog(WebKitWebView*, WebKitScriptDialog* dialog, Page* self) {
  self->prompts_.showDialog(dialog, self->site_);
  return TRUE;
}

gboolean Page::onAuthenticate(WebKitWebView*, WebKitAuthenticationRequest* request, Page* self) {
  self->prompts_.authenticate(request, self->mainFrame_);
  return TRUE;
}

// A refused menu is closed later: WebKit does not yet wait for its end.
gboolean Page::onOptionMenu(WebKitWebView*, WebKitOptionMenu* menu, GdkEvent*, GdkRectangle* field, Page* self) {
  if (self->listPress_.take(g_get_monotonic_time())) {
    self->options_.show(menu, *field);
  } else {
    g_idle_add_full(G_PRIORITY_DEFAULT, closeMenu, g_object_ref(menu), g_object_unref);
  }
  return TRUE;
}

gboolean Page::onUserInput(GtkWidget*, GdkEvent* event, Page* self) {
  if (!self->keyPresses_.isFirst(event)) return FALSE;
  if (opensList(event)) self->listPress_.pressed(g_get_monotonic_time());
  if (gdk_event_get_event_type(event) == GDK_KEY_PRESS && copies(event->key)) permitCopy();
  if (isDeliberate(event)) {
    self->opened_.reset();
    self->prompts_.resetLimit();
    self->credentials_.pressed(g_get_monotonic_time());
    self->fit_.userActed();
  }
  return FALSE;
}
