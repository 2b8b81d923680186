#include "platform/Desktop.h"

#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Url.h"
#include "platform/linux/GioHandles.h"
#include "platform/linux/Machine.h"

namespace platform {
namespace {

// Runs asynchronous calls one after the other in a context of their own, so that no event of the caller's is served
// meanwhile. All together have the time given; what is under way then is cancelled.
class TimedCalls {
 public:
  explicit TimedCalls(std::chrono::milliseconds timeout)
      : context_(g_main_context_new()),
        end_(g_cancellable_new()),
        timer_(g_timeout_source_new(static_cast<guint>(timeout.count()))) {
    g_main_context_push_thread_default(context_.get());
    g_source_set_callback(timer_.get(), giveUp, end_.get(), nullptr);
    g_source_attach(timer_.get(), context_.get());
  }
  TimedCalls(const TimedCalls&) = delete;
  TimedCalls& operator=(const TimedCalls&) = delete;
  ~TimedCalls() { g_main_context_pop_thread_default(context_.get()); }

  // What each call is to be given: its cancellable, its callback and, as the callback's data, this object.
  GCancellable* end() const { return end_.get(); }
  static void keepResult(GObject*, GAsyncResult* result, gpointer self) {
    static_cast<TimedCalls*>(self)->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
  }

  // Of the call just begun.
  Owned<GAsyncResult> result() {
    while (!result_)
      g_main_context_iteration(context_.get(), TRUE);
    return std::move(result_);
  }

 private:
  static gboolean giveUp(gpointer end) {
    g_cancellable_cancel(static_cast<GCancellable*>(end));
    return G_SOURCE_REMOVE;
  }

  const Owned<GMainContext> context_;
  const Owned<GCancellable> end_;
  const Owned<GSource> timer_;
  Owned<GAsyncResult> result_;
};

constexpr std::chrono::seconds kLaunchTimeout(2);

bool hasDisplay() {
  const auto isSet = [](const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && value[0] != '\0';
  };
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

// A launch of which GIO awaits more than that the program has been started, or asked over the bus to open something.
class Launch {
 public:
  explicit Launch(GCancellable* end) : context_(g_app_launch_context_new()), end_(end) {
    g_signal_connect_swapped(context_.get(), "launch-started", G_CALLBACK(noteStart), this);
    g_signal_connect_swapped(context_.get(), "launched", G_CALLBACK(noteEnd), this);
  }
  Launch(const Launch&) = delete;
  Launch& operator=(const Launch&) = delete;

  GAppLaunchContext* context() const { return context_.get(); }
  bool isDone() const { return done_; }

 private:
  // Begun in time it needs no answer; begun late, it may still fail.
  static void noteStart(Launch* self) { self->done_ = g_cancellable_is_cancelled(self->end_) == FALSE; }
  static void noteEnd(Launch* self) { self->done_ = true; }

  const Owned<GAppLaunchContext> context_;
  GCancellable* const end_;
  bool done_ = false;
};

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

RaiseResult askDisplay(pid_t process) {
  const Display display;
  if (!display.works()) return RaiseResult::kFailed;
  for (const xcb_window_t root : display.roots()) {
    const std::vector<std::uint32_t> windows = managedWindows(display, root);
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
      if (isOf(display, *window, process))
        return display.askToActivate(root, *window) ? RaiseResult::kRaised : RaiseResult::kFailed;
    }
  }
  return display.works() ? RaiseResult::kNotFound : RaiseResult::kFailed;
}

constexpr std::chrono::seconds kBusTimeout(1);  // for each of the two buses

struct Signal {
  std::string path;
  std::string interface;
  std::string member;
};

Signal signalFor(const std::string& name, const std::string& object) {
  std::string path = "/" + object;
  std::replace(path.begin(), path.end(), '.', '/');
  return {path, object, name.substr(name.rfind('.') + 1)};
}

std::string textOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

std::string socketAddress(const std::string& path) {
  if (::access(path.c_str(), F_OK) != 0) return "";
  const Owned<gchar> escaped(g_dbus_address_escape_value(path.c_str()));
  return std::string("unix:path=") + escaped.get();
}

// The entries of the list of addresses by which no bus would be started.
std::string runningOnly(std::string_view addresses) {
  std::string running;
  while (!addresses.empty()) {
    const std::string_view entry = addresses.substr(0, addresses.find(';'));
    addresses.remove_prefix(std::min(entry.size() + 1, addresses.size()));
    if (entry.empty() || entry.rfind("autolaunch:", 0) == 0) continue;
    if (!running.empty()) running += ';';
    running += entry;
  }
  return running;
}

// "" when there is no such bus; a bus that would have to be started is none.
std::string sessionBus() {
  const std::string told = textOf("DBUS_SESSION_BUS_ADDRESS");
  if (!told.empty()) return runningOnly(told);
  const std::string folder = textOf("XDG_RUNTIME_DIR");
  return folder.empty() ? "" : socketAddress(folder + "/bus");
}

std::string systemBus() {
  const std::string told = textOf("DBUS_SYSTEM_BUS_ADDRESS");
  return told.empty() ? socketAddress("/run/dbus/system_bus_socket") : runningOnly(told);
}

void emit(const std::string& address, const Signal& signal) {
  constexpr auto asClient = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  TimedCalls calls(kBusTimeout);
  g_dbus_connection_new_for_address(address.c_str(), asClient, nullptr, calls.end(), TimedCalls::keepResult, &calls);
  const Owned<GDBusConnection> bus(g_dbus_connection_new_for_address_finish(calls.result().get(), nullptr));
  if (!bus) return;
  g_dbus_connection_emit_signal(bus.get(), nullptr, signal.path.c_str(), signal.interface.c_str(),
                                signal.member.c_str(), nullptr, nullptr);
  g_dbus_connection_flush(bus.get(), calls.end(), TimedCalls::keepResult, &calls);
  g_dbus_connection_flush_finish(bus.get(), calls.result().get(), nullptr);
  g_dbus_connection_close(bus.get(), calls.end(), TimedCalls::keepResult, &calls);
  g_dbus_connection_close_finish(bus.get(), calls.result().get(), nullptr);
}

}  // namespace

bool openUrl(const std::string& url) {
  if (!isUrl(url) || !hasDisplay()) return false;
  TimedCalls calls(kLaunchTimeout);
  const Launch launch(calls.end());
  g_app_info_launch_default_for_uri_async(url.c_str(), launch.context(), calls.end(), TimedCalls::keepResult, &calls);
  GError* failure = nullptr;
  if (g_app_info_launch_default_for_uri_finish(calls.result().get(), &failure) == TRUE) return true;
  const Owned<GError> error(failure);
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) == TRUE && launch.isDone();
}

LaunchResult launchInForeground(const std::string& path, const std::vector<std::string>& /*arguments*/) {
  struct stat item {};
  if (::stat(path.c_str(), &item) == 0) return {};
  const int error = errno;
  const char* const name = ::strerrorname_np(error);
  return {false, ReferenceFailure{name == nullptr ? std::to_string(error) : name, g_strerror(error)}};
}

// An X client waits as long as the server lives; so one that waits for a silent server is left behind.
RaiseResult raiseWindow(pid_t process) {
  constexpr std::chrono::seconds timeout(2);
  const auto asked = std::make_shared<std::promise<RaiseResult>>();
  std::future<RaiseResult> answer = asked->get_future();
  if (!runDetached([asked, process] { asked->set_value(askDisplay(process)); })) return RaiseResult::kFailed;
  return answer.wait_for(timeout) == std::future_status::ready ? answer.get() : RaiseResult::kFailed;
}

void postToAllSessions(const std::string& name, const std::string& object) {
  const Signal signal = signalFor(name, object);
  if (!g_variant_is_object_path(signal.path.c_str()) || !g_dbus_is_interface_name(signal.interface.c_str()) ||
      !g_dbus_is_member_name(signal.member.c_str()))
    return;
  for (const std::string& address : {sessionBus(), systemBus()}) {
    if (!address.empty() && g_dbus_is_supported_address(address.c_str(), nullptr)) emit(address, signal);
  }
}

}  // namespace platform
