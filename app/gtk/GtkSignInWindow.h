// The sign-in window on GTK 3: a strip 20 pixels high above the page.
//
// - Keys go to the window's own commands first, then to the page, then to the editing commands: Ctrl+W and Alt+F4 close
//   the window, Ctrl with +, - and 0 zooms the page.
// - A menu that is open does not keep the window from being closed.
// - Frames have their origin at the bottom left; GTK's have it at the top left.
// - On Wayland, which does not report window positions, the origin is always 0, 0 and moving does nothing.
// Main thread only; needs an open display.

#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>

#include "app/SignInFlow.h"
#include "app/SignInWindow.h"
#include "app/gtk/KeyEvents.h"
#include "app/gtk/Strip.h"
#include "app/gtk/page/Page.h"

class GtkSignInWindow : public SignInWindow {
 public:
  GtkSignInWindow();
  ~GtkSignInWindow() override;

  GtkSignInWindow(const GtkSignInWindow&) = delete;
  GtkSignInWindow& operator=(const GtkSignInWindow&) = delete;

  // Creates the page and the contents of the window: 680 x 570, centered, not resizable, with the title "Sign In".
  // Call before any other function. `flow` must outlive the window. `sandboxed` as for `Page`.
  void open(SignInFlow& flow, bool sandboxed);

  GtkWindow* window() const { return window_; }

  // For recording traces.
  Page& page() { return *page_; }

  // Raises the window too, and gives the page the keyboard focus.
  void show();

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
  void openInBrowser(const std::string& address) override;
  void forbidMainFrameScrolling() override;
  void terminate() override;

 private:
  static gboolean onKeyPress(GtkWidget*, GdkEventKey* event, GtkSignInWindow* self);

  void perform(WindowCommand command);
  void handleUnusedKey(GdkEventKey* event);

  GtkWindow* window_;  // owned by GTK until the destructor destroys it
  Strip strip_;
  std::unique_ptr<Page> page_;
  mutable Frame lastReported_;  // by `windowFrame`
};
