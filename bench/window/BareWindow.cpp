// The peer of the sign-in window: a minimal WebKitGTK program with the default web context and default settings.
//
//   bare-window SIGN_IN REDIRECT PIPE
//
// Shows the spinner page, then the page at SIGN_IN. When a page whose address begins with REDIRECT has finished
// loading, writes its address into PIPE and ends.

#include <webkit2/webkit2.h>

#include <fstream>
#include <string>

#include "app/SpinnerPage.h"

namespace {

constexpr char kSpinnerAddress[] = "file:///bare-window/spinner_html.html";

void onLoadChanged(WebKitWebView* view, WebKitLoadEvent step, char** arguments) {
  if (step != WEBKIT_LOAD_FINISHED) return;

  const std::string address = webkit_web_view_get_uri(view);
  if (address == kSpinnerAddress) {
    webkit_web_view_load_uri(view, arguments[1]);
  } else if (address.rfind(arguments[2], 0) == 0) {
    std::ofstream(arguments[3]) << "<result><URL>" << address << "</URL></result>";
    gtk_main_quit();
  }
}

}  // namespace

int main(int argc, char** argv) {
  gtk_init(nullptr, nullptr);
  if (argc != 4) return 64;

  GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* const view = webkit_web_view_new();
  gtk_window_set_default_size(GTK_WINDOW(window), 680, 570);
  gtk_container_add(GTK_CONTAINER(window), view);
  g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
  g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), argv);

  webkit_web_view_load_html(WEBKIT_WEB_VIEW(view), spinnerHTMLSource.c_str(), kSpinnerAddress);
  gtk_widget_show_all(window);
  gtk_main();
  return 0;
}
