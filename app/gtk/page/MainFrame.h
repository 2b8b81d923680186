// The origins of the main frame: of the page that is shown, and of the page that it loads.
//
// Only they may ask the user for a name and password, or for a certificate. Main thread; needs no display.

#pragma once

#include <webkit2/webkit2.h>

#include <string>

class MainFrame {
 public:
  // The main frame has requested `address`: the first request of a load, or one after a redirect.
  void requested(const std::string& address) { requested_ = address; }

  // The page at `address` is shown.
  void committed(const std::string& address) { shown_ = requested_ = address; }

  // The load of `address` has ended without a page.
  void failed(const std::string& address) {
    if (requested_ == address) requested_ = shown_;
  }

  // Whether `origin` is one of the two. Compares scheme, host and port.
  bool isAt(WebKitSecurityOrigin* origin) const;

 private:
  std::string shown_;
  std::string requested_;
};
