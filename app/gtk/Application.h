// The application on GTK: creates the window and runs the main loop until the flow ends the run.
//
// Main thread only; needs an initialized GTK.

#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>

#include "app/SignInFlow.h"
#include "app/gtk/GtkSignInWindow.h"

class Application {
 public:
  // `sandboxed` as for `Page`.
  explicit Application(bool sandboxed);
  ~Application();

  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  // Shows the spinner page and handles events until the end of the run.
  void run(const std::string& bundlePath);

  // Ends the run as if the user had closed the window.
  void closeWindow();

 private:
  static gboolean onDelete(GtkWidget*, GdkEvent*, Application* self);

  std::unique_ptr<GtkSignInWindow> window_;
  SignInFlow flow_;
};
