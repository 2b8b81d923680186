// The operations of a window that the sign-in flow uses. Every shell implements this interface.
//
// - Main thread only.
// - Frames are in points. The origin is the bottom left corner of the screen (window frame) or of the window (web view
//   frame).
// - Strings are UTF-8.

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

  // Loads HTML text into the main frame, with the file `path` as its base. The finished load is reported under
  // `spinnerHTMLBaseURL`.
  virtual void loadHTML(const std::string& html, const std::string& path) = 0;

  // Loads an address into the main frame. An invalid address is passed on unchanged.
  virtual void loadAddress(const std::string& address) = 0;

  virtual void openInBrowser(const std::string& address) = 0;

  // Removes the main frame's scroll bars and stops it from scrolling. Requested for every finished main frame; the
  // default suits a shell that does so before it asks the platform for the frame's address.
  virtual void forbidMainFrameScrolling() {}

  // Ends the application, at once or after the current event.
  virtual void terminate() = 0;
};
