#include "app/gtk/SVOWindow.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "app/SpinnerPage.h"
#include "app/WindowKeys.h"
#include "app/gtk/AddressRules.h"
#include "app/gtk/PageGuards.h"
#include "app/gtk/WebViews.h"

namespace {

constexpr char kInitialTitle[] = "Sign In";
constexpr int kInitialWidth = 680;
constexpr int kInitialWebViewHeight = 550;
constexpr double kZoomStep = 1.1;
constexpr double kLeastZoom = 0.5;
constexpr double kMostZoom = 3.0;

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

WebKitUserStyleSheet* newStillStyle() {
  // A body that fills the window scrolls in place of the root: it may, but shows no bars.
  constexpr char kStyle[] =
      ":root { overflow: hidden !important; } "
      ":root::-webkit-scrollbar, :root > body::-webkit-scrollbar { display: none !important; }";
  return webkit_user_style_sheet_new(kStyle, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME, WEBKIT_USER_STYLE_LEVEL_USER,
                                     nullptr, nullptr);
}

// A click, or a key that presses a button. Typing is none: a page could wait for it to do what it may do once.
bool isDeliberate(const GdkEvent* event) {
  guint key = 0;
  if (!gdk_event_get_keyval(event, &key)) return true;
  return key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_space;
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

}  // namespace

SVOWindow::SVOWindow(bool sandboxed)
    : context_(newContext(sandboxed)),
      content_(webkit_user_content_manager_new()),
      window_(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL))),
      overlay_(GTK_OVERLAY(gtk_overlay_new())),
      webView_(newWebView(context_.get(), content_.get())),
      sheet_(overlay_, GTK_WIDGET(webView_)) {
  GtkWidget* const content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_pack_start(GTK_BOX(content), strip_.widget(), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(content), GTK_WIDGET(webView_), TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(overlay_), content);
  gtk_container_add(GTK_CONTAINER(window_), GTK_WIDGET(overlay_));
  gtk_widget_set_size_request(GTK_WIDGET(webView_), kInitialWidth, kInitialWebViewHeight);

  g_signal_connect(window_, "key-press-event", G_CALLBACK(onKeyPress), this);
  for (const char* const act : {"key-press-event", "button-press-event", "touch-event"})
    g_signal_connect(webView_, act, G_CALLBACK(onPersonActs), this);
  g_signal_connect(webView_, "load-changed", G_CALLBACK(onLoadChanged), this);
  g_signal_connect(webView_, "notify::is-loading", G_CALLBACK(onProgress), this);
  g_signal_connect(webView_, "notify::estimated-load-progress", G_CALLBACK(onProgress), this);

  gtk_window_set_title(window_, kInitialTitle);
  gtk_window_set_position(window_, GTK_WIN_POS_CENTER);
  gtk_window_set_resizable(window_, FALSE);
  gtk_widget_show_all(GTK_WIDGET(window_));
  setFunctions(window_, static_cast<GdkWMFunction>(GDK_FUNC_MOVE | GDK_FUNC_MINIMIZE | GDK_FUNC_CLOSE));
  guardPage(webView_);
}

// A page that hangs its process would keep it after the window is gone; and one whose dialog is dropped would go on.
SVOWindow::~SVOWindow() {
  webkit_web_view_terminate_web_process(webView_);
  sheet_.close();
  gtk_widget_destroy(GTK_WIDGET(window_));
}

void SVOWindow::activate() {
  gtk_window_present(window_);
  gtk_widget_grab_focus(GTK_WIDGET(webView_));
}

Frame SVOWindow::windowFrame() const {
  int x = 0, top = 0, width = 0, height = 0;
  gtk_window_get_position(window_, &x, &top);
  gtk_window_get_size(window_, &width, &height);
  told_ = {double(x), double(screenHeight() - top - height), double(width), double(height)};
  return told_;
}

void SVOWindow::setWindowFrame(const Frame& frame) {
  const int top = screenHeight() - pixels(frame.y + frame.height);
  gtk_window_resize(window_, pixels(frame.width), pixels(frame.height));

  // A window that is to stay where it was keeps the place that the window manager may have chosen for it since.
  if (pixels(frame.x) == pixels(told_.x) && pixels(frame.y) == pixels(told_.y)) return;
  gtk_window_move(window_, pixels(frame.x), std::max(top, 0));
}

Frame SVOWindow::webViewFrame() const {
  GtkAllocation place;
  gtk_widget_get_allocation(GTK_WIDGET(webView_), &place);
  return {double(place.x), 0, double(place.width), double(place.height)};
}

// The web view fills the window below the strip, so its size is the least that the window leaves it.
void SVOWindow::setWebViewFrame(const Frame& frame) {
  gtk_widget_set_size_request(GTK_WIDGET(webView_), pixels(frame.width), pixels(frame.height));
}

void SVOWindow::setTitle(const std::string& title) {
  gtk_window_set_title(window_, validUtf8(title).c_str());
}

void SVOWindow::setMinimumSize(double width, double height) {
  GdkGeometry limits{};
  limits.min_width = pixels(width);
  limits.min_height = pixels(height);
  gtk_window_set_geometry_hints(window_, nullptr, &limits, GDK_HINT_MIN_SIZE);
}

void SVOWindow::enableZoomButton() {
  setFunctions(window_, GDK_FUNC_ALL);
}

void SVOWindow::makeResizable() {
  gtk_window_set_resizable(window_, TRUE);
}

void SVOWindow::loadHTML(const std::string& html, const std::string&) {
  webkit_web_view_load_html(webView_, html.c_str(), spinnerHTMLBaseURL.c_str());
}

void SVOWindow::loadAddress(const std::string& address) {
  webkit_web_view_load_uri(webView_, address.c_str());
}

void SVOWindow::forbidMainFrameScrolling() {
  if (scrollingForbidden_) return;
  scrollingForbidden_ = true;
  settleScrolling();
}

void SVOWindow::settleScrolling() {
  webkit_user_content_manager_remove_all_style_sheets(content_.get());
  if (!scrollingForbidden_ || webkit_web_view_get_zoom_level(webView_) > 1) return;
  WebKitUserStyleSheet* const sheet = newStillStyle();
  webkit_user_content_manager_add_style_sheet(content_.get(), sheet);
  webkit_user_style_sheet_unref(sheet);
}

void SVOWindow::openInBrowser(const std::string& address) {
  if (!mayOpenOutside(address) || !outside_.spend()) return;
  g_app_info_launch_default_for_uri_async(address.c_str(), nullptr, nullptr, nullptr, nullptr);
}

void SVOWindow::terminate() {
  gtk_main_quit();
}

// What the page has not taken comes here a second time, and is not offered to it again.
gboolean SVOWindow::onKeyPress(GtkWidget*, GdkEventKey* event, SVOWindow* self) {
  if (const std::optional<WindowCommand> command = windowCommandOf(*event)) {
    self->perform(*command);
  } else if (!gtk_window_propagate_key_event(self->window_, event)) {
    self->offerToEditing(event);
  }
  return TRUE;
}

void SVOWindow::perform(WindowCommand command) {
  switch (command) {
    case WindowCommand::kClose:
      return gtk_window_close(window_);
    case WindowCommand::kZoomIn:
      return setZoom(webkit_web_view_get_zoom_level(webView_) * kZoomStep);
    case WindowCommand::kZoomOut:
      return setZoom(webkit_web_view_get_zoom_level(webView_) / kZoomStep);
    case WindowCommand::kZoomReset:
      return setZoom(1);
  }
}

void SVOWindow::setZoom(double level) {
  const bool isAlmostOne = std::abs(level - 1) < 0.01;
  webkit_web_view_set_zoom_level(webView_, isAlmostOne ? 1 : std::clamp(level, kLeastZoom, kMostZoom));
  settleScrolling();
}

void SVOWindow::offerToEditing(GdkEventKey* event) {
  const bool pageHasKeyboard = gtk_window_get_focus(window_) == GTK_WIDGET(webView_);
  const KeyDecision decision =
      decideKey(charactersOf(*event), modifiersOf(*event), [&](EditingCommand) { return pageHasKeyboard; });
  switch (decision.action) {
    case KeyDecision::Action::kDrop:
      return;
    case KeyDecision::Action::kPerform:
      if (!gtk_widget_is_sensitive(GTK_WIDGET(webView_))) return;  // behind a sheet
      return webkit_web_view_execute_editing_command(webView_, nameOf(*decision.command));
    case KeyDecision::Action::kPassOn:
      break;
  }
  if (!gtk_window_activate_key(window_, event)) (void)gtk_bindings_activate_event(G_OBJECT(window_), event);
}

void SVOWindow::onLoadChanged(WebKitWebView* view, WebKitLoadEvent step, SVOWindow* self) {
  if (step != WEBKIT_LOAD_COMMITTED) return;
  const char* const uri = webkit_web_view_get_uri(view);
  const std::string address = uri == nullptr ? "" : uri;
  GTlsCertificate* certificate = nullptr;
  GTlsCertificateFlags errors{};
  const bool overTls = webkit_web_view_get_tls_info(view, &certificate, &errors) && errors == 0;
  self->site_ = address == spinnerHTMLBaseURL ? Site() : siteOf(address, overTls);
  self->strip_.show(self->site_);
}

void SVOWindow::onProgress(WebKitWebView* view, GParamSpec*, SVOWindow* self) {
  if (!webkit_web_view_is_loading(view)) return self->strip_.hideProgress();
  self->strip_.showProgress(webkit_web_view_get_estimated_load_progress(view));
}

gboolean SVOWindow::onPersonActs(GtkWidget*, GdkEvent* event, SVOWindow* self) {
  if (isDeliberate(event)) {
    self->outside_.renew();
    self->dialogs_.renew();
  }
  return FALSE;
}
