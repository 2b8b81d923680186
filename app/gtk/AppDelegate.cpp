#include "app/gtk/AppDelegate.h"

#include "app/gtk/LoadSignals.h"

AppDelegate::AppDelegate()
    : window_(std::make_unique<SVOWindow>()),
      flow_(*window_),
      clock_([this] { tracker_.dataTimedOut(); }),
      tracker_(*this, clock_) {
  connectLoadSignals(window_->webView(), tracker_);
  g_signal_connect(window_->webView(), "create", G_CALLBACK(onCreate), this);
  g_signal_connect(window_->window(), "delete-event", G_CALLBACK(onDelete), this);
}

// The window first: while it goes, the web view may still speak to the tracker.
AppDelegate::~AppDelegate() {
  window_.reset();
}

void AppDelegate::run(const std::string& bundlePath) {
  window_->activate();
  flow_.launch(bundlePath);
  gtk_main();
}

void AppDelegate::closeWindow() {
  if (flow_.hasEnded()) return;
  flow_.lastWindowClosed();
  window_->terminate();
}

// TRUE: the window goes when the application does, after its message.
gboolean AppDelegate::onDelete(GtkWidget*, GdkEvent*, AppDelegate* self) {
  self->closeWindow();
  return TRUE;
}

// Every request for a window arrives here exactly once, whether a link or a script made it.
GtkWidget* AppDelegate::onCreate(WebKitWebView*, WebKitNavigationAction* action, AppDelegate* self) {
  const char* const address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  if (address != nullptr && *address != '\0') self->flow_.newWindowRequested(address);
  return nullptr;
}
