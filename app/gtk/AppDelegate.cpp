#include "app/gtk/AppDelegate.h"

#include <optional>

#include "app/CommandLine.h"
#include "app/SpinnerPage.h"
#include "app/gtk/AddressRules.h"
#include "app/gtk/GtkHandles.h"
#include "app/gtk/LoadSignals.h"

AppDelegate::AppDelegate(bool sandboxed)
    : window_(std::make_unique<SVOWindow>(sandboxed)),
      flow_(*window_),
      clock_([this] { tracker_.dataTimedOut(); }),
      tracker_(*this, clock_),
      networkProcess_([this] { tracker_.pageProcessEnded(); }),
      pageDialogs_(
          window_->webView(), window_->sheet(), window_->dialogs(), [this] { return window_->site(); }, tracker_) {
  WebKitWebView* const page = window_->webView();
  g_signal_connect(page, "decide-policy", G_CALLBACK(onDecidePolicy), this);
  g_signal_connect(page, "create", G_CALLBACK(onCreate), this);
  connectLoadSignals(page, tracker_);
  g_signal_connect(window_->window(), "delete-event", G_CALLBACK(onDelete), this);
}

// The window first: while it goes, the web view may still speak to the tracker.
AppDelegate::~AppDelegate() {
  window_.reset();
}

void AppDelegate::run(const std::string& bundlePath) {
  window_->activate();
  flow_.launch(validUtf8(bundlePath));  // WebKit loads nothing at all under an address that is no UTF-8
  gtk_main();
}

void AppDelegate::closeWindow() {
  if (flow_.hasEnded()) return;
  flow_.lastWindowClosed();
  window_->terminate();
}

// A page has been loaded, so the network process runs. WebKit ignores an address that is not UTF-8, which therefore has
// no name in the log.
void AppDelegate::mainFrameFinished(const std::optional<std::string>& address) {
  networkProcess_.start();
  if (address == spinnerHTMLBaseURL) {
    const std::string signIn = CommandLine::GetInstance()->zel_url;
    tracker_.awaitPage(validUtf8(signIn) == signIn ? signIn : "");
  }
  flow_.mainFrameFinished(address);
}

// TRUE: the window goes when the application does, after its message.
gboolean AppDelegate::onDelete(GtkWidget*, GdkEvent*, AppDelegate* self) {
  self->closeWindow();
  return TRUE;
}

// Asked before the tracker hears of a navigation: one that goes outside is none.
gboolean AppDelegate::onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                     AppDelegate* self) {
  if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
  WebKitNavigationAction* const action =
      webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const char* const address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  if (address == nullptr) return FALSE;

  const bool byAClick = webkit_navigation_action_get_navigation_type(action) == WEBKIT_NAVIGATION_TYPE_LINK_CLICKED &&
                        webkit_navigation_action_is_user_gesture(action);
  if (self->mayGo(address) && !(byAClick && self->flow_.linkClicked(address))) return FALSE;
  webkit_policy_decision_ignore(decision);
  return TRUE;
}

// The launcher may name a file, and one file another; a site may not.
bool AppDelegate::mayGo(const std::string& address) const {
  const Site::Kind from = window_->site().kind;
  return !hasScheme(address, "file") || from == Site::Kind::kNone || from == Site::Kind::kFile;
}

// Every request for a window arrives here exactly once, whether a link or a script made it.
GtkWidget* AppDelegate::onCreate(WebKitWebView*, WebKitNavigationAction* action, AppDelegate* self) {
  const char* const address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  if (address != nullptr && *address != '\0') self->flow_.newWindowRequested(address);
  return nullptr;
}
