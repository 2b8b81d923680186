// What the sign-in flow may ask of a window: the one interface that a shell implements.
//
// Called on the main thread only. Frames are in points, origin at the bottom left of the screen (window) or of the
// window (web view); a shell for a platform that counts from the top turns them over. A text is UTF-8 and is copied.

#pragma once

#include <string>

struct Frame {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

class SignInWindow {
 public:
  virtual ~SignInWindow() = default;

  virtual Frame windowFrame() const = 0;
  virtual void setWindowFrame(const Frame& frame) = 0;
  virtual Frame webViewFrame() const = 0;
  virtual void setWebViewFrame(const Frame& frame) = 0;

  virtual void setTitle(const std::string& title) = 0;
  virtual void setMinimumSize(double width, double height) = 0;
  virtual void enableZoomButton() = 0;
  virtual void makeResizable() = 0;

  // Loads HTML text into the main frame, as though it came from the file at `path`. Its finished load is reported under
  // `spinnerHTMLBaseURL`.
  virtual void loadHTML(const std::string& html, const std::string& path) = 0;

  // Loads an address into the main frame. One that is no address is handed on as it is.
  virtual void loadAddress(const std::string& address) = 0;

  // No scroll bars and no scrolling by hand for the main frame, from now on.
  virtual void forbidMainFrameScrolling() = 0;

  virtual void openInBrowser(const std::string& address) = 0;

  // Ends the application: at once, or when the current event has been handled.
  virtual void terminate() = 0;
};
