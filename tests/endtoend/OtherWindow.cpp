#include "tests/endtoend/OtherWindow.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <stdexcept>

namespace endtoend {

OtherWindow::OtherWindow(const std::string& display, const tools::Area& frame)
    : display_(XOpenDisplay(display.c_str()), XCloseDisplay) {
  if (!display_) throw std::runtime_error("no display " + display);
  id_ = XCreateSimpleWindow(display_.get(), DefaultRootWindow(display_.get()), frame.x, frame.y,
                            static_cast<unsigned>(frame.width), static_cast<unsigned>(frame.height), 0, 0,
                            WhitePixel(display_.get(), 0));
  XSizeHints place = {};
  place.flags = USPosition;
  XSetWMNormalHints(display_.get(), id_, &place);
  char name[] = "other";
  XClassHint names = {name, name};
  XSetClassHint(display_.get(), id_, &names);
  XStoreName(display_.get(), id_, name);
  XSelectInput(display_.get(), id_, KeyPressMask | ButtonPressMask);
  XMapWindow(display_.get(), id_);
  XFlush(display_.get());
}

}  // namespace endtoend
