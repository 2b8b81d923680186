#include "app/gtk/GtkSignInWindow.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "app/WindowKeys.h"
#include "app/gtk/Glib.h"
#include "app/gtk/Language.h"

namespace {

constexpr int kInitialWidth = 680;
constexpr int kInitialWebViewHeight = 550;
constexpr double kZoomStep = 1.1;

int pixels(double points) {
  return static_cast<int>(std::lround(points));
}

int screenHeight() {
  return gdk_window_get_height(gdk_get_default_root_window());
}

// What a window manager offers in the title bar and its menu.
void setFunctions(GtkWindow* window, GdkWMFunction functions) {
  gdk_window_set_functions(gtk_widget_get_window(GTK_WIDGET(window)), functions);
}

bool closesWindow(const GdkEvent* event) {
  return event->type == GDK_DELETE ||
         (event->type == GDK_KEY_PRESS && windowCommandOf(event->key) == WindowCommand::kClose);
}

// An open menu takes every key, and GTK drops requests to close a window behind it.
void handleEvent(GdkEvent* event, gpointer window) {
  GtkWidget* const grabber = gtk_grab_get_current();
  if (!GTK_IS_MENU_SHELL(grabber) || !closesWindow(event)) return gtk_main_do_event(event);
  gtk_menu_shell_cancel(GTK_MENU_SHELL(grabber));
  gtk_window_close(GTK_WINDOW(window));
}

}  // namespace

GtkSignInWindow::GtkSignInWindow() : window_(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL))) {}

GtkSignInWindow::~GtkSignInWindow() {
  gdk_event_handler_set([](GdkEvent* event, gpointer) { gtk_main_do_event(event); }, nullptr, nullptr);
  page_.reset();
  gtk_widget_destroy(GTK_WIDGET(window_));
}

void GtkSignInWindow::open(SignInFlow& flow, bool sandboxed) {
  GtkOverlay* const overlay = GTK_OVERLAY(gtk_overlay_new());
  page_ = std::make_unique<Page>(overlay, strip_, flow, sandboxed);

  GtkWidget* const content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_pack_start(GTK_BOX(content), strip_.widget(), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(content), page_->area(), TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(overlay), content);
  gtk_container_add(GTK_CONTAINER(window_), GTK_WIDGET(overlay));
  gtk_widget_set_size_request(page_->widget(), kInitialWidth, kInitialWebViewHeight);

  g_signal_connect(window_, "key-press-event", G_CALLBACK(onKeyPress), this);
  gdk_event_handler_set(handleEvent, window_, nullptr);

  gtk_window_set_title(window_, _("Sign In"));
  gtk_window_set_position(window_, GTK_WIN_POS_CENTER);
  gtk_window_set_resizable(window_, FALSE);
}

void GtkSignInWindow::show() {
  gtk_widget_show_all(GTK_WIDGET(window_));
  setFunctions(window_, static_cast<GdkWMFunction>(GDK_FUNC_MOVE | GDK_FUNC_MINIMIZE | GDK_FUNC_CLOSE));
  gtk_window_present(window_);
  gtk_widget_grab_focus(page_->widget());
}

Frame GtkSignInWindow::windowFrame() const {
  int x = 0, top = 0, width = 0, height = 0;
  gtk_window_get_position(window_, &x, &top);
  gtk_window_get_size(window_, &width, &height);
  lastReported_ = {double(x), double(screenHeight() - top - height), double(width), double(height)};
  return lastReported_;
}

void GtkSignInWindow::setWindowFrame(const Frame& frame) {
  const int top = screenHeight() - pixels(frame.y + frame.height);
  gtk_window_resize(window_, pixels(frame.width), pixels(frame.height));

  // The origin has not changed: keep the position that the window manager may have chosen since.
  if (pixels(frame.x) == pixels(lastReported_.x) && pixels(frame.y) == pixels(lastReported_.y)) return;
  gtk_window_move(window_, pixels(frame.x), std::max(top, 0));
}

Frame GtkSignInWindow::webViewFrame() const {
  GtkAllocation place;
  gtk_widget_get_allocation(page_->widget(), &place);
  return {double(place.x), 0, double(place.width), double(place.height)};
}

// The web view fills the window below the strip, so this is its minimum size.
void GtkSignInWindow::setWebViewFrame(const Frame& frame) {
  gtk_widget_set_size_request(page_->widget(), pixels(frame.width), pixels(frame.height));
}

void GtkSignInWindow::setTitle(const std::string& title) {
  gtk_window_set_title(window_, validUtf8(title).c_str());
}

void GtkSignInWindow::setMinimumSize(double width, double height) {
  GdkGeometry limits{};
  limits.min_width = pixels(width);
  limits.min_height = pixels(height);
  gtk_window_set_geometry_hints(window_, nullptr, &limits, GDK_HINT_MIN_SIZE);
}

void GtkSignInWindow::enableZoomButton() {
  setFunctions(window_, GDK_FUNC_ALL);
}

void GtkSignInWindow::makeResizable() {
  gtk_window_set_resizable(window_, TRUE);
}

void GtkSignInWindow::loadHTML(const std::string& html, const std::string&) {
  page_->loadHTML(html);
}

void GtkSignInWindow::loadAddress(const std::string& address) {
  page_->loadAddress(address);
}

void GtkSignInWindow::openInBrowser(const std::string& address) {
  page_->openOutside(address);
}

void GtkSignInWindow::forbidMainFrameScrolling() {
  page_->forbidScrolling();
}

void GtkSignInWindow::terminate() {
  gtk_main_quit();
}

// A key that the page has not used arrives here a second time. It is not offered to the page again.
gboolean GtkSignInWindow::onKeyPress(GtkWidget*, GdkEventKey* event, GtkSignInWindow* self) {
  if (const std::optional<WindowCommand> command = windowCommandOf(*event)) {
    self->perform(*command);
  } else if (!gtk_window_propagate_key_event(self->window_, event)) {
    self->handleUnusedKey(event);
  }
  return TRUE;
}

void GtkSignInWindow::perform(WindowCommand command) {
  switch (command) {
    case WindowCommand::kClose:
      return gtk_window_close(window_);
    case WindowCommand::kZoomIn:
      return page_->zoomBy(kZoomStep);
    case WindowCommand::kZoomOut:
      return page_->zoomBy(1 / kZoomStep);
    case WindowCommand::kZoomReset:
      return page_->resetZoom();
  }
}

void GtkSignInWindow::handleUnusedKey(GdkEventKey* event) {
  const bool pageHasFocus = gtk_window_get_focus(window_) == page_->widget();
  const KeyDecision decision =
      decideKey(charactersOf(*event), modifiersOf(*event), [&](EditingCommand) { return pageHasFocus; });
  switch (decision.action) {
    case KeyDecision::Action::kDrop:
      return;
    case KeyDecision::Action::kPerform:
      return page_->edit(*decision.command);
    case KeyDecision::Action::kPassOn:
      break;
  }
  if (!gtk_window_activate_key(window_, event)) (void)gtk_bindings_activate_event(G_OBJECT(window_), event);
}
