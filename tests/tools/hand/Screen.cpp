#include "tests/tools/hand/Screen.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xdamage.h>
#include <X11/extensions/Xfixes.h>
#include <glib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace tools {
namespace {

constexpr long kMaxPropertyLength = 1 << 20;  // in units of four bytes: room for the largest icon

int ignoreError(Display*, XErrorEvent*) {
  return 0;
}

Window rootOf(Display* display) {
  return DefaultRootWindow(display);
}

std::uint8_t channel(unsigned long pixel, unsigned shift) {
  return static_cast<std::uint8_t>(pixel >> shift & 0xff);
}

}  // namespace

// Events that Xlib has already read are no longer on the connection: `prepare` checks both.
struct Screen::EventSource {
  GSource base;
  Screen* screen;

  static gboolean prepare(GSource* source, gint* timeout) {
    *timeout = -1;
    Screen* screen = reinterpret_cast<EventSource*>(source)->screen;
    return XPending(screen->display_.get()) > 0;
  }
  static gboolean check(GSource* source) {
    return XPending(reinterpret_cast<EventSource*>(source)->screen->display_.get()) > 0;
  }
  static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
    reinterpret_cast<EventSource*>(source)->screen->handleEvents();
    return G_SOURCE_CONTINUE;
  }
};

Screen::Screen(const std::string& display) : display_(XOpenDisplay(display.c_str()), XCloseDisplay) {
  if (!display_) throw std::runtime_error("no display " + display);
  XSetErrorHandler(ignoreError);

  int damageError = 0;
  if (!XDamageQueryExtension(display_.get(), &damageEvent_, &damageError)) throw std::runtime_error("no XDamage");
  XDamageCreate(display_.get(), rootOf(display_.get()), XDamageReportNonEmpty);
  XSelectInput(display_.get(), rootOf(display_.get()), SubstructureNotifyMask | PropertyChangeMask);

  static GSourceFuncs functions = {EventSource::prepare, EventSource::check, EventSource::dispatch, nullptr, {}, {}};
  events_ = reinterpret_cast<EventSource*>(g_source_new(&functions, sizeof(EventSource)));
  events_->screen = this;
  g_source_add_unix_fd(&events_->base, ConnectionNumber(display_.get()), G_IO_IN);
  g_source_attach(&events_->base, nullptr);
}

Screen::~Screen() {
  g_source_destroy(&events_->base);
  g_source_unref(&events_->base);
}

void Screen::handleEvents() {
  while (XPending(display_.get()) > 0) {
    XEvent event;
    XNextEvent(display_.get(), &event);
    if (event.type == damageEvent_ + XDamageNotify) {
      const auto* damage = reinterpret_cast<const XDamageNotifyEvent*>(&event);
      XDamageSubtract(display_.get(), damage->damage, None, None);
    } else if (event.type == CreateNotify) {
      XSelectInput(display_.get(), event.xcreatewindow.window, StructureNotifyMask | PropertyChangeMask);
    }
  }
}

std::vector<unsigned char> Screen::property(Window window, const char* name) const {
  Atom type = None;
  int format = 0;
  unsigned long count = 0, rest = 0;
  unsigned char* data = nullptr;
  const Atom atom = XInternAtom(display_.get(), name, False);
  if (XGetWindowProperty(display_.get(), window, atom, 0, kMaxPropertyLength, False, AnyPropertyType, &type, &format,
                         &count, &rest, &data) != Success) {
    return {};
  }
  // Xlib returns 32-bit values as longs.
  const std::size_t size = count * (format == 32 ? sizeof(long) : static_cast<std::size_t>(format / 8));
  std::vector<unsigned char> result(data, data + size);
  XFree(data);
  return result;
}

WindowId Screen::root() const {
  return rootOf(display_.get());
}

std::vector<unsigned long> Screen::numbersOf(Window window, const char* name) const {
  const std::vector<unsigned char> bytes = property(window, name);
  std::vector<unsigned long> numbers(bytes.size() / sizeof(long));
  if (!numbers.empty()) std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(long));
  return numbers;
}

std::string Screen::textOf(Window window, const char* name) const {
  const std::vector<unsigned char> bytes = property(window, name);
  return {bytes.begin(), bytes.end()};
}

std::vector<std::string> Screen::namesOf(Window window, const char* name) const {
  std::vector<std::string> names;
  for (const unsigned long number : numbersOf(window, name)) {
    char* const text = XGetAtomName(display_.get(), number);
    if (text == nullptr) continue;
    names.emplace_back(text);
    XFree(text);
  }
  return names;
}

bool Screen::isEmpty(Window window) const {
  const XserverRegion shape = XFixesCreateRegionFromWindow(display_.get(), window, WindowRegionBounding);
  int count = 0;
  const std::unique_ptr<XRectangle, int (*)(void*)> parts(XFixesFetchRegion(display_.get(), shape, &count), XFree);
  XFixesDestroyRegion(display_.get(), shape);
  return count == 0;
}

// GTK's windows for drags and grabs are mapped, but invisible: they have no area, or are left of the screen.
std::optional<ScreenWindow> Screen::describe(Window window) const {
  XWindowAttributes attributes;
  if (!XGetWindowAttributes(display_.get(), window, &attributes) || attributes.map_state != IsViewable) return {};
  const std::vector<unsigned long> pid = numbersOf(window, "_NET_WM_PID");
  if (pid.empty()) return {};
  int x = 0, y = 0;
  Window child = None;
  if (!XTranslateCoordinates(display_.get(), window, root(), 0, 0, &x, &y, &child)) return {};
  if (x + attributes.width <= 0 || isEmpty(window)) return {};
  return ScreenWindow{window,
                      static_cast<pid_t>(pid.front()),
                      textOf(window, "_NET_WM_NAME"),
                      {x, y, attributes.width, attributes.height}};
}

// A window manager reparents each window.
void Screen::addWindowsBelow(Window window, std::vector<ScreenWindow>& found) const {
  Window root = 0, parent = 0, *children = nullptr;
  unsigned count = 0;
  if (!XQueryTree(display_.get(), window, &root, &parent, &children, &count)) return;
  for (unsigned i = 0; i < count; ++i) {
    if (const auto described = describe(children[i])) {
      found.push_back(*described);
    } else {
      addWindowsBelow(children[i], found);
    }
  }
  if (children != nullptr) XFree(children);
}

std::vector<ScreenWindow> Screen::windows() const {
  std::vector<ScreenWindow> result;
  addWindowsBelow(root(), result);
  return result;
}

std::optional<ScreenWindow> Screen::windowOf(pid_t pid) const {
  for (const ScreenWindow& window : windows()) {
    if (window.pid == pid) return window;
  }
  return std::nullopt;
}

SizeLimits Screen::sizeLimitsOf(Window window) const {
  XSizeHints hints = {};
  long supplied = 0;
  if (!XGetWMNormalHints(display_.get(), window, &hints, &supplied)) return {};
  SizeLimits limits;
  if ((hints.flags & PMinSize) != 0) limits = {hints.min_width, hints.min_height, false};
  limits.fixed = (hints.flags & PMinSize) != 0 && (hints.flags & PMaxSize) != 0 && hints.max_width == hints.min_width &&
                 hints.max_height == hints.min_height;
  return limits;
}

WindowId Screen::ownerOf(const char* selection) const {
  return XGetSelectionOwner(display_.get(), XInternAtom(display_.get(), selection, False));
}

bool Screen::canGrabInput() const {
  const int pointer =
      XGrabPointer(display_.get(), root(), False, 0, GrabModeAsync, GrabModeAsync, None, None, CurrentTime);
  const int keyboard = XGrabKeyboard(display_.get(), root(), False, GrabModeAsync, GrabModeAsync, CurrentTime);
  XUngrabPointer(display_.get(), CurrentTime);
  XUngrabKeyboard(display_.get(), CurrentTime);
  XSync(display_.get(), False);
  return pointer == GrabSuccess && keyboard == GrabSuccess;
}

Picture Screen::picture(const Area& area) const {
  const int left = std::max(area.x, 0);
  const int top = std::max(area.y, 0);
  const int width = std::min(area.x + area.width, DisplayWidth(display_.get(), 0)) - left;
  const int height = std::min(area.y + area.height, DisplayHeight(display_.get(), 0)) - top;
  XImage* image = XGetImage(display_.get(), rootOf(display_.get()), left, top, static_cast<unsigned>(width),
                            static_cast<unsigned>(height), AllPlanes, ZPixmap);
  if (image == nullptr) throw std::runtime_error("cannot read the screen");
  std::vector<std::uint8_t> pixels;
  pixels.reserve(3 * static_cast<std::size_t>(width * height));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const unsigned long pixel = XGetPixel(image, x, y);
      pixels.insert(pixels.end(), {channel(pixel, 16), channel(pixel, 8), channel(pixel, 0)});
    }
  }
  XDestroyImage(image);
  return Picture(width, height, std::move(pixels));
}

Area Screen::pointer() const {
  const std::unique_ptr<XFixesCursorImage, int (*)(void*)> image(XFixesGetCursorImage(display_.get()), XFree);
  if (!image) throw std::runtime_error("cannot read the pointer");
  return {image->x - image->xhot, image->y - image->yhot, image->width, image->height};
}

void Screen::moveTo(int x, int y) {
  XTestFakeMotionEvent(display_.get(), -1, x, y, CurrentTime);
  XFlush(display_.get());
}

void Screen::click(int x, int y) {
  moveTo(x, y);
  XTestFakeButtonEvent(display_.get(), Button1, True, CurrentTime);
  XTestFakeButtonEvent(display_.get(), Button1, False, CurrentTime);
  XFlush(display_.get());
}

// In one request: with a delay in between it would be two single clicks.
void Screen::doubleClick(int x, int y) {
  XTestFakeMotionEvent(display_.get(), -1, x, y, CurrentTime);
  for (const Bool down : {True, False, True, False})
    XTestFakeButtonEvent(display_.get(), Button1, down, CurrentTime);
  XFlush(display_.get());
}

void Screen::clickRight(int x, int y) {
  moveTo(x, y);
  XTestFakeButtonEvent(display_.get(), Button3, True, CurrentTime);
  XTestFakeButtonEvent(display_.get(), Button3, False, CurrentTime);
  XFlush(display_.get());
}

// A program starts a drag when the pointer has moved some pixels.
void Screen::drag(int fromX, int fromY, int toX, int toY) {
  constexpr int kSteps = 8;
  moveTo(fromX, fromY);
  XTestFakeButtonEvent(display_.get(), Button1, True, CurrentTime);
  for (int step = 1; step <= kSteps; ++step)
    moveTo(fromX + (toX - fromX) * step / kSteps, fromY + (toY - fromY) * step / kSteps);
}

void Screen::releaseButton() {
  XTestFakeButtonEvent(display_.get(), Button1, False, CurrentTime);
  XFlush(display_.get());
}

void Screen::turnWheel(int clicks) {
  for (int i = 0; i < clicks; ++i) {
    XTestFakeButtonEvent(display_.get(), Button5, True, CurrentTime);
    XTestFakeButtonEvent(display_.get(), Button5, False, CurrentTime);
  }
  XFlush(display_.get());
}

// Each added key gets its own code: programs look up a code late, when a reused one has another meaning.
KeyCode Screen::codeOf(KeySymbol key) {
  if (const KeyCode code = XKeysymToKeycode(display_.get(), key); code != 0) return code;
  if (const auto added = addedKeys_.find(key); added != addedKeys_.end()) return added->second;

  int first = 0, last = 0, width = 0;
  XDisplayKeycodes(display_.get(), &first, &last);
  const std::unique_ptr<KeySym, int (*)(void*)> symbols(
      XGetKeyboardMapping(display_.get(), static_cast<KeyCode>(first), last - first + 1, &width), XFree);
  for (int code = last; code >= first; --code) {
    if (symbols.get()[(code - first) * width] != NoSymbol) continue;
    XChangeKeyboardMapping(display_.get(), code, 1, &key, 1);
    XSync(display_.get(), False);
    return addedKeys_[key] = static_cast<KeyCode>(code);
  }
  throw std::runtime_error("no free key code");
}

void Screen::key(KeySymbol key, bool down) {
  XTestFakeKeyEvent(display_.get(), codeOf(key), down, CurrentTime);
  XFlush(display_.get());
}

void Screen::press(KeySymbol pressed, std::initializer_list<KeySymbol> held) {
  for (KeySym each : held)
    key(each, true);
  key(pressed, true);
  key(pressed, false);
  for (KeySym each : held)
    key(each, false);
}

void Screen::type(const std::string& text) {
  for (const char character : text) {
    const auto symbol = static_cast<KeySym>(static_cast<unsigned char>(character));
    const KeyCode code = XKeysymToKeycode(display_.get(), symbol);
    if (XkbKeycodeToKeysym(display_.get(), code, 0, 0) == symbol) {
      press(symbol);
    } else {
      press(symbol, {XK_Shift_L});
    }
  }
}

void Screen::focus(Window window) {
  XSetInputFocus(display_.get(), window, RevertToParent, CurrentTime);
  XFlush(display_.get());
}

void Screen::place(Window window, const Area& frame) {
  XMoveResizeWindow(display_.get(), window, frame.x, frame.y, static_cast<unsigned>(frame.width),
                    static_cast<unsigned>(frame.height));
  XFlush(display_.get());
}

void Screen::close(Window window) {
  const Atom deleteWindow = XInternAtom(display_.get(), "WM_DELETE_WINDOW", False);
  send(window, window, "WM_PROTOCOLS", {static_cast<long>(deleteWindow), CurrentTime});
}

void Screen::request(Window window, const char* name, const std::vector<long>& values) {
  send(root(), window, name, values);
}

void Screen::send(Window to, Window about, const char* name, const std::vector<long>& values) {
  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = about;
  event.xclient.message_type = XInternAtom(display_.get(), name, False);
  event.xclient.format = 32;
  std::copy(values.begin(), values.end(), event.xclient.data.l);
  const long mask = to == root() ? SubstructureNotifyMask | SubstructureRedirectMask : NoEventMask;
  XSendEvent(display_.get(), to, False, mask, &event);
  XFlush(display_.get());
}

}  // namespace tools
