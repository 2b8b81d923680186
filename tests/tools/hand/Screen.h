// The eye and the hand of somebody who sits before an X screen: looks at windows, types and clicks.
//
// Whatever happens on the screen, a window that comes or a spot that is painted anew, is an event of the default main
// context, so that waitUntil() can wait for it. A window that vanishes between two questions answers like none.

#pragma once

#include <X11/keysym.h>
#include <sys/types.h>

#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/tools/hand/Picture.h"

struct _XDisplay;  // Xlib's own header defines words like None and Bool, which nobody else bears

namespace tools {

using WindowId = unsigned long;
using KeySymbol = unsigned long;  // XK_a, XK_Tab, …

struct ScreenWindow {
  WindowId id = 0;
  pid_t pid = 0;
  std::string title;
  Area frame;  // on the screen, without the border that a window manager draws around it
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

  // The windows that are shown and say which process they belong to, with or without a window manager's border.
  std::vector<ScreenWindow> windows() const;
  std::optional<ScreenWindow> windowOf(pid_t pid) const;
  SizeLimits sizeLimitsOf(WindowId window) const;

  // A property as other programs read it; empty when the window has none of that name. What concerns the whole screen
  // stands at its root.
  //   numbersOf(screen.root(), "_NET_ACTIVE_WINDOW")  => {0x400003}
  //   textOf(window, "WM_CLASS")                      => "name\0Class\0"
  //   namesOf(window, "WM_PROTOCOLS")                 => {"WM_DELETE_WINDOW", "WM_TAKE_FOCUS"}
  WindowId root() const;
  std::vector<unsigned long> numbersOf(WindowId window, const char* name) const;
  std::string textOf(WindowId window, const char* name) const;
  std::vector<std::string> namesOf(WindowId window, const char* name) const;

  // What the screen shows there; parts beyond its edges are left out.
  Picture picture(const Area& area) const;

  // The image of the mouse pointer, where it lies on the screen.
  Area pointer() const;

  void moveTo(int x, int y);
  void click(int x, int y);
  void doubleClick(int x, int y);
  void clickRight(int x, int y);
  void turnWheel(int clicks);  // towards the user

  // Presses a key while the others are held down: press(XK_a, {XK_Control_L}). A key that the keyboard does not have is
  // added to it.
  void press(KeySymbol key, std::initializer_list<KeySymbol> held = {});
  void type(const std::string& text);  // printable ASCII

  // Gives a window the keyboard where no window manager does. Without it the keys go to the window under the pointer.
  void focus(WindowId window);

  // What a user does who drags a window and its corner elsewhere.
  void place(WindowId window, const Area& frame);

  // What the close button of a window's title bar does.
  void close(WindowId window);

  // Asks the window manager for something, as a taskbar does: request(root(), "_NET_CURRENT_DESKTOP", {2}).
  void request(WindowId window, const char* name, const std::vector<long>& values);

 private:
  struct EventSource;

  std::vector<unsigned char> property(WindowId window, const char* name) const;
  std::optional<ScreenWindow> describe(WindowId window) const;
  void addWindowsBelow(WindowId window, std::vector<ScreenWindow>& found) const;
  unsigned char codeOf(KeySymbol key);
  void key(KeySymbol key, bool down);
  void send(WindowId to, WindowId about, const char* name, const std::vector<long>& values);
  void handleEvents();

  std::unique_ptr<_XDisplay, int (*)(_XDisplay*)> display_;
  EventSource* events_ = nullptr;
  int damageEvent_ = 0;
  std::map<KeySymbol, unsigned char> addedKeys_;
};

}  // namespace tools
