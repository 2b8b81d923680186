// A program with one window that does not request the keyboard focus when it appears. Runs until it is terminated.

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <unistd.h>

int main() {
  Display* const display = XOpenDisplay(nullptr);
  if (display == nullptr) return 1;
  const Window window =
      XCreateSimpleWindow(display, DefaultRootWindow(display), 300, 300, 200, 100, 0, 0, WhitePixel(display, 0));
  const auto say = [&](const char* property, long number) {
    XChangeProperty(display, window, XInternAtom(display, property, False), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&number), 1);
  };
  XSetWMProperties(display, window, nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr);  // sets WM_CLIENT_MACHINE
  say("_NET_WM_PID", ::getpid());
  say("_NET_WM_USER_TIME", 0);
  XStoreName(display, window, "test window");
  XMapWindow(display, window);
  for (XEvent event;;)
    XNextEvent(display, &event);
}
