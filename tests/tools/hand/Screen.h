// Reads an X screen and simulates keyboard and mouse input.
//
// - Changes on the screen, such as a new window or a repainted area, are events of the default main context, so that
//   waitUntil() can wait for them.
// - A window that is destroyed between two calls is treated as missing.

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

struct _XDisplay;  // Xlib's header defines macros such as None and Bool

namespace tools {

using WindowId = unsigned long;
using KeySymbol = unsigned long;  // XK_a, XK_Tab, …

struct ScreenWindow {
  WindowId id = 0;
  pid_t pid = 0;
  std::string title;
  Area frame;  // on the screen, without the window manager's border
};

// The size hints of a window.
struct SizeLimits {
  int minWidth = 0;
  int minHeight = 0;
  bool fixed = false;  // the maximum size is the minimum size
};

class Screen {
 public:
  // Throws std::runtime_error if the display does not exist.
  explicit Screen(const std::string& display);
  ~Screen();

  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  // The visible windows that name their process.
  std::vector<ScreenWindow> windows() const;
  std::optional<ScreenWindow> windowOf(pid_t pid) const;
  SizeLimits sizeLimitsOf(WindowId window) const;

  // Reads a property as other programs do; empty if the window does not have it. Properties of the whole screen are at
  // its root.
  //   numbersOf(screen.root(), "_NET_ACTIVE_WINDOW")  => {0x400003}
  //   textOf(window, "WM_CLASS")                      => "name\0Class\0"
  //   namesOf(window, "WM_PROTOCOLS")                 => {"WM_DELETE_WINDOW", "WM_TAKE_FOCUS"}
  WindowId root() const;
  std::vector<unsigned long> numbersOf(WindowId window, const char* name) const;
  std::string textOf(WindowId window, const char* name) const;
  std::vector<std::string> namesOf(WindowId window, const char* name) const;

  // Returns the window that owns a selection, such as "CLIPBOARD" or "PRIMARY"; 0 if there is none.
  WindowId ownerOf(const char* selection) const;

  // Whether another program could grab the pointer and the keyboard. Grabs both for a moment.
  bool canGrabInput() const;

  // Takes a screenshot. Parts outside the screen are left out.
  Picture picture(const Area& area) const;

  // The area of the mouse pointer's image on the screen.
  Area pointer() const;

  void moveTo(int x, int y);
  void click(int x, int y);
  void doubleClick(int x, int y);
  void clickRight(int x, int y);
  void turnWheel(int clicks);  // toward the user

  // Presses the button at one place and moves to another, in steps. The button stays down until releaseButton().
  void drag(int fromX, int fromY, int toX, int toY);
  void releaseButton();

  // Presses a key while `held` are down: press(XK_a, {XK_Control_L}). Adds a key that the keyboard does not have.
  void press(KeySymbol key, std::initializer_list<KeySymbol> held = {});
  void type(const std::string& text);  // printable ASCII

  // Sets the input focus without a window manager. Without a focus, keys go to the window under the pointer.
  void focus(WindowId window);

  // Moves and resizes a window as a user does.
  void place(WindowId window, const Area& frame);

  // Closes a window as its close button does.
  void close(WindowId window);

  // Sends a request to the window manager, as a taskbar does: request(root(), "_NET_CURRENT_DESKTOP", {2}).
  void request(WindowId window, const char* name, const std::vector<long>& values);

 private:
  struct EventSource;

  std::vector<unsigned char> property(WindowId window, const char* name) const;
  bool isEmpty(WindowId window) const;
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
