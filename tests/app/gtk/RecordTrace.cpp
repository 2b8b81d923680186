// Prints what a real web view says of the loads of one address: the traces that LoadTrackerTest replays.
//
//   record-trace ADDRESS [SECONDS]
//
// Loads the address after a spinner-like page, in a window on $DISPLAY, and prints one event a line until nothing has
// happened for SECONDS (2 unless told).

#include <gtk/gtk.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/gtk/LoadSignals.h"

namespace {

class TracePrinter : public LoadEvents {
 public:
  explicit TracePrinter(unsigned quietSeconds) : quietSeconds_(quietSeconds) { restartClock(); }

  void loadRequested(const std::string& address) override { print("requested " + address); }
  void loadStarted(const std::string& address) override { print("started " + address); }
  void loadRedirected(const std::string& address) override { print("redirected " + address); }
  void loadCommitted(const std::string& address) override { print("committed " + address); }
  void loadFinished(const std::string& address) override { print("finished " + address); }
  void loadFailed(bool provisional, const std::string& address, const LoadError& error) override {
    print(std::string(provisional ? "failed-provisional " : "failed ") + address + " " + name(error));
  }
  void navigationAsked(const std::string& address) override { print("asked " + address); }
  void resourceStarted(unsigned id, const std::string& address, bool isMain) override {
    print((isMain ? "main-resource " : "resource ") + std::to_string(id) + " " + address);
  }
  void resourceRedirected(unsigned id, const std::string& address) override {
    print("resource-redirected " + std::to_string(id) + " " + address);
  }
  void downloadStarted(const std::string& address) override { print("download " + address); }
  void personAsked() override { print("person-asked"); }
  void personAnswered() override { print("person-answered"); }
  void resourceAnswered(unsigned id) override { print("resource-answered " + std::to_string(id)); }
  void resourceFinished(unsigned id) override { print("resource-finished " + std::to_string(id)); }
  void resourceFailed(unsigned id, const std::string& address, const LoadError& error) override {
    print("resource-failed " + std::to_string(id) + " " + address + " " + name(error));
  }
  void progressed() override { print("progressed"); }
  void pageProcessEnded() override { print("page-process-ended"); }

 private:
  static std::string name(const LoadError& error) {
    return (error.domain.empty() ? "-" : error.domain) + " " + std::to_string(error.code);
  }

  void print(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
    restartClock();
  }

  void restartClock() {
    if (clock_ != 0) g_source_remove(clock_);
    clock_ = g_timeout_add_seconds(
        quietSeconds_,
        [](gpointer) -> gboolean {
          gtk_main_quit();
          return G_SOURCE_REMOVE;
        },
        nullptr);
  }

  unsigned quietSeconds_;
  guint clock_ = 0;
};

struct Recording {
  std::string address;
  bool begun = false;
};

void onLoadChanged(WebKitWebView* view, WebKitLoadEvent step, Recording* recording) {
  if (step != WEBKIT_LOAD_FINISHED || recording->begun) return;
  recording->begun = true;
  webkit_web_view_load_uri(view, recording->address.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !gtk_init_check(nullptr, nullptr)) {
    std::fputs("usage: record-trace ADDRESS [SECONDS], with a display\n", stderr);
    return 1;
  }

  TracePrinter printer(argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 2);
  Recording recording{argv[1]};
  WebKitWebContext* const context = webkit_web_context_new_ephemeral();
  GtkWidget* const view = webkit_web_view_new_with_context(context);
  WebKitSettings* const settings = webkit_web_view_get_settings(WEBKIT_WEB_VIEW(view));
  webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
  webkit_settings_set_javascript_can_open_windows_automatically(settings, TRUE);
  GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_container_add(GTK_CONTAINER(window), view);
  gtk_window_set_default_size(GTK_WINDOW(window), 680, 550);
  gtk_widget_show_all(window);

  connectLoadSignals(WEBKIT_WEB_VIEW(view), printer);
  g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), &recording);
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(view), "<html><body>spinner</body></html>", "file:///spinner_html.html");
  gtk_main();

  gtk_widget_destroy(window);
  g_object_unref(context);
  return 0;
}
