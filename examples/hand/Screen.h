// The eye and the hand of somebody who sits before an X screen: looks at windows, types and clicks.
//
// Whatever happens on the screen, a window that comes or a spot that is painted anew, is an event of the default main
// context, so that waitUntil() can wait for it. A window that vanishes between two questions answers like none.

#pragma once

#include <X11/Xlib.h>
#include <X11/keysym.h>
#include <glib.h>
#include <sys/types.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "examples/hand/Picture.h"

namespace examples {

struct ScreenWindow {
  Window id = 0;
  pid_t pid = 0;
  std::string title;
  Area frame;
};

// What a window manager is told about the sizes that a window may have.
struct SizeLimits {
  int minWidth = 0;
  int minHeight = 0;
  bool fixed = false;  // the greatest size is the least
};

class Screen {
 public:
  // Throws std::runtime_error when there is no such display.
  explicit Screen(const std::string& display);
  ~Screen();

  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  // The windows that are shown and say which process they belong to.
  std::vector<ScreenWindow> windows() const;
  std::optional<ScreenWindow> windowOf(pid_t pid) const;
  SizeLimits sizeLimitsOf(Window window) const;

  // What the screen shows there; parts beyond its edges are left out.
  Picture picture(const Area& area) const;

  void moveTo(int x, int y);
  void click(int x, int y);
  void turnWheel(int clicks);  // towards the user

  // Presses a key while the others are held down: press(XK_a, {XK_Control_L}).
  void press(KeySym key, std::initializer_list<KeySym> held = {});
  void type(const std::string& text);  // printable ASCII

  // What the close button of a window's title bar does.
  void close(Window window);

 private:
  struct EventSource;

  std::vector<unsigned char> property(Window window, const char* name) const;
  std::optional<ScreenWindow> describe(Window window) const;
  void key(KeySym key, bool down);
  void handleEvents();

  std::unique_ptr<Display, int (*)(Display*)> display_;
  EventSource* events_ = nullptr;
  int damageEvent_ = 0;
};

}  // namespace examples
