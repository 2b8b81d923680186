#include "app/gtk/SVOWindow.h"

#include <algorithm>
#include <cmath>

#include "app/SpinnerPage.h"

namespace {

constexpr char kInitialTitle[] = "Sign In";
constexpr int kStripHeight = 20;
constexpr int kInitialWidth = 680;
constexpr int kInitialWebViewHeight = 550;

int pixels(double points) {
  return static_cast<int>(std::lround(points));
}

int screenHeight() {
  return gdk_window_get_height(gdk_get_default_root_window());
}

WebKitSettings* newSettings() {
  WebKitSettings* const settings = webkit_settings_new();
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS  // both are off for good in current WebKit; they stay here for an older one
      webkit_settings_set_enable_java(settings, FALSE);
  webkit_settings_set_enable_plugins(settings, FALSE);
  G_GNUC_END_IGNORE_DEPRECATIONS
  webkit_settings_set_enable_javascript(settings, TRUE);
  webkit_settings_set_auto_load_images(settings, TRUE);
  webkit_settings_set_enable_tabs_to_links(settings, TRUE);
  webkit_settings_set_javascript_can_open_windows_automatically(settings, TRUE);

  // A sign-in page gains nothing from the GPU; without it the window needs a fifth less memory and keeps clear of the
  // drivers that leave it blank.
  webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
  return settings;
}

WebKitWebContext* newContext() {
  WebKitWebContext* const context = webkit_web_context_new_ephemeral();
  webkit_web_context_set_cache_model(context, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  g_signal_connect(context, "download-started",
                   G_CALLBACK(+[](WebKitWebContext*, WebKitDownload* download) { webkit_download_cancel(download); }),
                   nullptr);
  return context;
}

WebKitWebView* newWebView(WebKitWebContext* context, WebKitUserContentManager* content) {
  const ObjectRef<WebKitSettings> settings(newSettings());
  GtkWidget* const view = GTK_WIDGET(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager",
                                                  content, "settings", settings.get(), "expand", TRUE, nullptr));
  gtk_widget_set_size_request(view, kInitialWidth, kInitialWebViewHeight);
  return WEBKIT_WEB_VIEW(view);
}

// What a window manager offers in the title bar and its menu.
void setFunctions(GtkWindow* window, GdkWMFunction functions) {
  gdk_window_set_functions(gtk_widget_get_window(GTK_WIDGET(window)), functions);
}

GtkWidget* newStrip() {
  GtkWidget* const strip = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  gtk_widget_set_size_request(strip, -1, kStripHeight);
  return strip;
}

}  // namespace

SVOWindow::SVOWindow()
    : context_(newContext()),
      content_(webkit_user_content_manager_new()),
      window_(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL))),
      webView_(newWebView(context_.get(), content_.get())) {
  GtkWidget* const content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_pack_start(GTK_BOX(content), newStrip(), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(content), GTK_WIDGET(webView_), TRUE, TRUE, 0);
  gtk_container_add(GTK_CONTAINER(window_), content);

  // Nobody prints a sign-in page, and WebKit's print dialog would outlive the run. Nor are chosen files remembered.
  g_signal_connect(webView_, "print", G_CALLBACK(gtk_true), nullptr);
  g_object_set(gtk_settings_get_default(), "gtk-recent-files-enabled", FALSE, nullptr);

  gtk_window_set_title(window_, kInitialTitle);
  gtk_window_set_position(window_, GTK_WIN_POS_CENTER);
  gtk_window_set_resizable(window_, FALSE);
  gtk_widget_show_all(GTK_WIDGET(window_));
  setFunctions(window_, static_cast<GdkWMFunction>(GDK_FUNC_MOVE | GDK_FUNC_MINIMIZE | GDK_FUNC_CLOSE));
}

// A page that hangs its process would keep it after the window is gone.
SVOWindow::~SVOWindow() {
  webkit_web_view_terminate_web_process(webView_);
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
  return {double(x), double(screenHeight() - top - height), double(width), double(height)};
}

void SVOWindow::setWindowFrame(const Frame& frame) {
  const Frame current = windowFrame();
  const int top = screenHeight() - pixels(frame.y + frame.height);
  gtk_window_resize(window_, pixels(frame.width), pixels(frame.height));

  // A window that stays where it is keeps the place that the window manager chose for it.
  if (pixels(frame.x) == pixels(current.x) && pixels(frame.y) == pixels(current.y)) return;
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

  // A body that fills the window scrolls in place of the root: it may, but shows no bars.
  constexpr char kStyle[] =
      ":root { overflow: hidden !important; } "
      ":root::-webkit-scrollbar, :root > body::-webkit-scrollbar { display: none !important; }";
  WebKitUserStyleSheet* const sheet = webkit_user_style_sheet_new(kStyle, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                                                  WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr);
  webkit_user_content_manager_add_style_sheet(content_.get(), sheet);
  webkit_user_style_sheet_unref(sheet);
}

void SVOWindow::openInBrowser(const std::string& address) {
  g_app_info_launch_default_for_uri_async(address.c_str(), nullptr, nullptr, nullptr, nullptr);
}

void SVOWindow::terminate() {
  gtk_main_quit();
}
