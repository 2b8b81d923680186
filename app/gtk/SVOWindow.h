// The sign-in window on GTK 3: a strip 20 high above the web view, together the whole inside of the window.
//
// Its own keys come first, then the page, then the editing commands: Ctrl+W and Alt+F4 close it, Ctrl with +, - and 0
// zoom the page between a half and three times its size. While a page is zoomed in, its main frame may be scrolled, for
// parts of it would be out of reach.
//
// A page may open three addresses outside and show five dialogs, and as many again after each click, Return or space of
// the person; what goes beyond is dropped. Only addresses to read, to write to and to call open outside.
//
// Frames count from the bottom left of the screen; this class turns them over. Where the platform keeps window
// positions to itself (Wayland) the origin is always 0, 0 and moving does nothing. The web view's session is ephemeral:
// no cookie, cache or storage reaches the disk. Main thread only; needs an open display.

#pragma once

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <string>

#include "app/SignInWindow.h"
#include "app/gtk/Allowance.h"
#include "app/gtk/GtkHandles.h"
#include "app/gtk/KeyEvents.h"
#include "app/gtk/Sheet.h"
#include "app/gtk/Site.h"
#include "app/gtk/Strip.h"

class SVOWindow : public SignInWindow {
 public:
  // Makes and shows the window, 680 x 570 and not resizable, in the middle of the screen, under the title "Sign In".
  // `sandboxed` puts the page process into WebKit's sandbox, which must work on this machine.
  explicit SVOWindow(bool sandboxed);
  ~SVOWindow() override;

  SVOWindow(const SVOWindow&) = delete;
  SVOWindow& operator=(const SVOWindow&) = delete;

  GtkWindow* window() const { return window_; }
  WebKitWebView* webView() const { return webView_; }
  Sheet& sheet() { return sheet_; }

  // Of the dialogs that a page may show by itself.
  Allowance& dialogs() { return dialogs_; }

  // Of the page that is shown.
  const Site& site() const { return site_; }

  // Comes to the front with the keyboard in the page.
  void activate();

  Frame windowFrame() const override;
  void setWindowFrame(const Frame& frame) override;
  Frame webViewFrame() const override;
  void setWebViewFrame(const Frame& frame) override;
  void setTitle(const std::string& title) override;
  void setMinimumSize(double width, double height) override;
  void enableZoomButton() override;
  void makeResizable() override;
  void loadHTML(const std::string& html, const std::string& path) override;
  void loadAddress(const std::string& address) override;
  void forbidMainFrameScrolling() override;
  void openInBrowser(const std::string& address) override;
  void terminate() override;

 private:
  static gboolean onKeyPress(GtkWidget*, GdkEventKey* event, SVOWindow* self);
  static gboolean onPersonActs(GtkWidget*, GdkEvent* event, SVOWindow* self);
  static void onLoadChanged(WebKitWebView*, WebKitLoadEvent step, SVOWindow* self);
  static void onProgress(WebKitWebView*, GParamSpec*, SVOWindow* self);

  void perform(WindowCommand command);
  void offerToEditing(GdkEventKey* event);
  void setZoom(double level);
  void settleScrolling();

  ObjectRef<WebKitWebContext> context_;
  ObjectRef<WebKitUserContentManager> content_;
  GtkWindow* window_;    // owned by GTK until the destructor destroys it
  GtkOverlay* overlay_;  // owned by the window, like all that follows
  WebKitWebView* webView_;
  Strip strip_;
  Sheet sheet_;
  Site site_;
  Allowance outside_{3};
  Allowance dialogs_{5};
  bool scrollingForbidden_ = false;
  mutable Frame told_;  // by `windowFrame`, the last time
};
