#include "app/gtk/Application.h"

#include "app/gtk/Glib.h"

Application::Application(bool sandboxed) : window_(std::make_unique<GtkSignInWindow>()), flow_(*window_) {
  window_->open(flow_, sandboxed);
  g_signal_connect(window_->window(), "delete-event", G_CALLBACK(onDelete), this);
}

// The page reports to the flow until it is destroyed.
Application::~Application() {
  window_.reset();
}

// Loads before showing: WebKit starts its processes while GTK draws the window for the first time.
void Application::run(const std::string& bundlePath) {
  flow_.launch(validUtf8(bundlePath));  // WebKit does not load a page whose address is not UTF-8
  window_->show();
  gtk_main();
}

void Application::closeWindow() {
  if (flow_.hasEnded()) return;
  flow_.lastWindowClosed();
  window_->terminate();
}

// Returns TRUE: the window is destroyed with the application, after the message.
gboolean Application::onDelete(GtkWidget*, GdkEvent*, Application* self) {
  self->closeWindow();
  return TRUE;
}
