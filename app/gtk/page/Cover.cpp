#include "app/gtk/page/Cover.h"

#include <utility>

#include "app/gtk/Glib.h"
#include "app/gtk/Style.h"
#include "app/gtk/page/Settings.h"

namespace {

constexpr char kHandler[] = "painted";
constexpr char kSignal[] = "script-message-received::painted";

// WebKit runs no animation frame before the page's first layout. It paints at the end of each frame, and runs the next
// one when the web view has received the painted one.
constexpr char kReportPaint[] =
    "requestAnimationFrame(() => requestAnimationFrame(() => "
    "webkit.messageHandlers.painted.postMessage(location.href)))";

constexpr char kStyle[] = ".cover { background-color: @theme_base_color; }";

// Empty for a page without an origin, such as "about:blank".
std::string originOf(const std::string& address) {
  const Owned<WebKitSecurityOrigin, webkit_security_origin_unref> origin(
      webkit_security_origin_new_for_uri(address.c_str()));
  const Owned<char, g_free> text(webkit_security_origin_to_string(origin.get()));
  return orEmpty(text.get());
}

GtkWidget* newCover() {
  addStyle(kStyle);
  GtkWidget* const cover = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  setStyleClass(cover, "cover");
  gtk_widget_set_no_show_all(cover, TRUE);
  return cover;
}

}  // namespace

Cover::Cover(WebKitWebView* view, WebKitUserContentManager* content)
    : view_(GTK_WIDGET(view)), content_(content), area_(GTK_OVERLAY(gtk_overlay_new())), cover_(newCover()) {
  gtk_container_add(GTK_CONTAINER(area_), view_);
  gtk_overlay_add_overlay(area_, cover_);

  const Owned<WebKitUserScript, webkit_user_script_unref> script(
      webkit_user_script_new_for_world(kReportPaint, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                       WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, kScriptWorld, nullptr, nullptr));
  webkit_user_content_manager_add_script(content_, script.get());
  webkit_user_content_manager_register_script_message_handler_in_world(content_, kHandler, kScriptWorld);
  g_signal_connect(content_, kSignal, G_CALLBACK(onPainted), this);
}

Cover::~Cover() {
  g_signal_handlers_disconnect_by_data(content_, this);
}

void Cover::committed(const std::string& address, bool isOwn) {
  const std::string before = std::exchange(origin_, originOf(address));
  const bool wasOwn = std::exchange(isOwn_, isOwn);
  if (!isOwn && !wasOwn && (origin_.empty() || origin_ != before)) setVisible(true);
}

// A page that has been left may report late.
void Cover::onPainted(WebKitUserContentManager*, WebKitJavascriptResult* result, Cover* self) {
  const Owned<char, g_free> address(jsc_value_to_string(webkit_javascript_result_get_js_value(result)));
  if (originOf(orEmpty(address.get())) == self->origin_) self->setVisible(false);
}

// Disables the container. A prompt disables the web view, so that the end of one does not end the other.
void Cover::setVisible(bool visible) {
  if (gtk_widget_get_visible(cover_) == (visible ? TRUE : FALSE)) return;
  gtk_widget_set_visible(cover_, visible);
  gtk_widget_set_sensitive(GTK_WIDGET(area_), !visible);
  if (!visible) gtk_widget_grab_focus(view_);
}
