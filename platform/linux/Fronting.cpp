#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "platform/Applications.h"
#include "platform/linux/AsideThread.h"

namespace platform {
namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

// A connection of its own: errors of its requests reach nobody else in the process, and end nothing.
class Display {
 public:
  Display() : connection_(::xcb_connect(nullptr, nullptr)) {}
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  ~Display() { ::xcb_disconnect(connection_); }

  bool works() const { return ::xcb_connection_has_error(connection_) == 0; }

  std::vector<xcb_window_t> roots() const {
    std::vector<xcb_window_t> roots;
    for (auto screen = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_)); screen.rem > 0;
         ::xcb_screen_next(&screen))
      roots.push_back(screen.data->root);
    return roots;
  }

  // Empty when the window, or what it says, does not exist.
  std::vector<std::uint32_t> numbersOf(xcb_window_t window, const char* name) const {
    const auto reply = property(window, name);
    if (!reply || reply->format != 32) return {};
    const auto* const numbers = static_cast<const std::uint32_t*>(::xcb_get_property_value(reply.get()));
    return {numbers, numbers + reply->value_len};
  }

  std::string textOf(xcb_window_t window, const char* name) const {
    const auto reply = property(window, name);
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(::xcb_get_property_value(reply.get())), reply->value_len};
  }

  // Whether the server has taken the request.
  bool askToActivate(xcb_window_t root, xcb_window_t window) const {
    constexpr std::uint32_t likeATaskbar = 2;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom("_NET_ACTIVE_WINDOW");
    event.data.data32[0] = likeATaskbar;
    const std::uint32_t toTheManager = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    const auto sent = ::xcb_send_event_checked(connection_, 0, root, toTheManager, reinterpret_cast<char*>(&event));
    const Reply<xcb_generic_error_t> error(::xcb_request_check(connection_, sent));
    return !error && works();
  }

 private:
  xcb_atom_t atom(const char* name) const {
    const auto asked = ::xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(::xcb_intern_atom_reply(connection_, asked, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  }

  Reply<xcb_get_property_reply_t> property(xcb_window_t window, const char* name) const {
    constexpr std::uint32_t mostWords = 1 << 16;
    const auto asked = ::xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, mostWords);
    return Reply<xcb_get_property_reply_t>(::xcb_get_property_reply(connection_, asked, nullptr));
  }

  xcb_connection_t* connection_;
};

// Windows of programs on other machines say numbers that mean nothing here.
bool isOfThisMachine(const Display& display, xcb_window_t window) {
  std::string machine = display.textOf(window, "WM_CLIENT_MACHINE");
  machine.resize(std::strlen(machine.c_str()));
  std::array<char, 256> here{};
  return machine.empty() || ::gethostname(here.data(), here.size() - 1) != 0 || machine == here.data();
}

bool isOf(const Display& display, xcb_window_t window, pid_t process) {
  const std::vector<std::uint32_t> said = display.numbersOf(window, "_NET_WM_PID");
  return !said.empty() && static_cast<pid_t>(said.front()) == process && isOfThisMachine(display, window);
}

// From the one at the back to the one in front, where the window manager tells their order.
std::vector<std::uint32_t> managedWindows(const Display& display, xcb_window_t root) {
  std::vector<std::uint32_t> windows = display.numbersOf(root, "_NET_CLIENT_LIST_STACKING");
  if (windows.empty()) windows = display.numbersOf(root, "_NET_CLIENT_LIST");
  return windows;
}

Fronting askDisplay(pid_t process) {
  const Display display;
  if (!display.works()) return Fronting::impossible;
  for (const xcb_window_t root : display.roots()) {
    const std::vector<std::uint32_t> windows = managedWindows(display, root);
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
      if (isOf(display, *window, process))
        return display.askToActivate(root, *window) ? Fronting::done : Fronting::impossible;
    }
  }
  return display.works() ? Fronting::unknown : Fronting::impossible;
}

}  // namespace

// An X client waits as long as the server lives; so one that waits for a silent server is left behind.
Fronting bringToFront(pid_t process) {
  constexpr std::chrono::seconds patience(2);
  const auto asked = std::make_shared<std::promise<Fronting>>();
  std::future<Fronting> answer = asked->get_future();
  if (!doAside([asked, process] { asked->set_value(askDisplay(process)); })) return Fronting::impossible;
  return answer.wait_for(patience) == std::future_status::ready ? answer.get() : Fronting::impossible;
}

}  // namespace platform
