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

#include "platform/Failure.h"
#include "platform/Text.h"
#include "platform/Url.h"
#include "platform/linux/Glib.h"
#include "platform/linux/Machine.h"

namespace platform {
namespace {

// Runs asynchronous GIO calls one after the other. A main context of its own keeps the caller's events waiting. The
// timeout applies to all calls together and cancels the pending one.
class TimedCalls {
 public:
  explicit TimedCalls(std::chrono::milliseconds timeout)
      : context_(g_main_context_new()),
        cancellable_(g_cancellable_new()),
        timer_(g_timeout_source_new(static_cast<guint>(timeout.count()))) {
    g_main_context_push_thread_default(context_.get());
    g_source_set_callback(timer_.get(), cancel, cancellable_.get(), nullptr);
    g_source_attach(timer_.get(), context_.get());
  }
  TimedCalls(const TimedCalls&) = delete;
  TimedCalls& operator=(const TimedCalls&) = delete;
  ~TimedCalls() {
    g_source_destroy(timer_.get());
    g_main_context_pop_thread_default(context_.get());
  }

  // Arguments of each call: the cancellable, the callback, and this object as the callback's data.
  GCancellable* cancellable() const { return cancellable_.get(); }
  static void storeResult(GObject*, GAsyncResult* result, gpointer self) {
    static_cast<TimedCalls*>(self)->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
  }

  // Waits for the call that was started last.
  Owned<GAsyncResult> result() {
    while (!result_)
      g_main_context_iteration(context_.get(), TRUE);
    return std::move(result_);
  }

 private:
  static gboolean cancel(gpointer cancellable) {
    g_cancellable_cancel(static_cast<GCancellable*>(cancellable));
    return G_SOURCE_REMOVE;
  }

  const Owned<GMainContext, g_main_context_unref> context_;
  const Owned<GCancellable> cancellable_;
  const Owned<GSource, g_source_unref> timer_;
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

// Observes a launch: GIO reports its result later than the start of the program or the request over the bus.
class Launch {
 public:
  explicit Launch(GCancellable* cancellable) : context_(g_app_launch_context_new()), cancellable_(cancellable) {
    g_signal_connect_swapped(context_.get(), "launch-started", G_CALLBACK(onStarted), this);
    g_signal_connect_swapped(context_.get(), "launched", G_CALLBACK(onLaunched), this);
  }
  Launch(const Launch&) = delete;
  Launch& operator=(const Launch&) = delete;

  GAppLaunchContext* context() const { return context_.get(); }
  bool isDone() const { return done_; }

 private:
  // A launch that starts before the timeout counts as done without a reply. A later one can still fail.
  static void onStarted(Launch* self) { self->done_ = g_cancellable_is_cancelled(self->cancellable_) == FALSE; }
  static void onLaunched(Launch* self) { self->done_ = true; }

  const Owned<GAppLaunchContext> context_;
  GCancellable* const cancellable_;
  bool done_ = false;
};

template <typename T>
using Reply = Owned<T, std::free>;

// A separate connection to the X server, so that errors of its requests do not reach the process's other connections.
class Display {
 public:
  Display() : connection_(::xcb_connect(nullptr, nullptr)) {}
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  ~Display() { ::xcb_disconnect(connection_); }

  bool isConnected() const { return ::xcb_connection_has_error(connection_) == 0; }

  std::vector<xcb_window_t> roots() const {
    std::vector<xcb_window_t> roots;
    for (auto screen = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_)); screen.rem > 0;
         ::xcb_screen_next(&screen))
      roots.push_back(screen.data->root);
    return roots;
  }

  // Empty if the window or the property does not exist.
  std::vector<std::uint32_t> numbers(xcb_window_t window, const char* name) const {
    const auto reply = property(window, name);
    if (!reply || reply->format != 32) return {};
    const auto* const numbers = static_cast<const std::uint32_t*>(::xcb_get_property_value(reply.get()));
    return {numbers, numbers + reply->value_len};
  }

  std::string text(xcb_window_t window, const char* name) const {
    const auto reply = property(window, name);
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(::xcb_get_property_value(reply.get())), reply->value_len};
  }

  // Returns whether the server accepted the request.
  bool requestActivation(xcb_window_t root, xcb_window_t window) const {
    constexpr std::uint32_t kSourcePager = 2;  // source indication of EWMH for taskbars and pagers
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom("_NET_ACTIVE_WINDOW");
    event.data.data32[0] = kSourcePager;
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    const auto cookie = ::xcb_send_event_checked(connection_, 0, root, mask, reinterpret_cast<char*>(&event));
    const Reply<xcb_generic_error_t> error(::xcb_request_check(connection_, cookie));
    return !error && isConnected();
  }

 private:
  xcb_atom_t atom(const char* name) const {
    const auto cookie = ::xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(::xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  }

  Reply<xcb_get_property_reply_t> property(xcb_window_t window, const char* name) const {
    constexpr std::uint32_t kMaxWords = 1 << 16;
    const auto cookie = ::xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, kMaxWords);
    return Reply<xcb_get_property_reply_t>(::xcb_get_property_reply(connection_, cookie, nullptr));
  }

  xcb_connection_t* connection_;
};

// A process number on a window of another machine's program has no meaning here.
bool isLocal(const Display& display, xcb_window_t window) {
  std::string machine = display.text(window, "WM_CLIENT_MACHINE");
  machine.resize(std::strlen(machine.c_str()));
  std::array<char, 256> host{};
  return machine.empty() || ::gethostname(host.data(), host.size() - 1) != 0 || machine == host.data();
}

bool belongsTo(const Display& display, xcb_window_t window, pid_t process) {
  const std::vector<std::uint32_t> owner = display.numbers(window, "_NET_WM_PID");
  return !owner.empty() && static_cast<pid_t>(owner.front()) == process && isLocal(display, window);
}

// In stacking order from bottom to top, if the window manager reports that order.
std::vector<std::uint32_t> managedWindows(const Display& display, xcb_window_t root) {
  std::vector<std::uint32_t> windows = display.numbers(root, "_NET_CLIENT_LIST_STACKING");
  if (windows.empty()) windows = display.numbers(root, "_NET_CLIENT_LIST");
  return windows;
}

RaiseResult raiseTopmostWindow(pid_t process) {
  const Display display;
  if (!display.isConnected()) return RaiseResult::kFailed;
  for (const xcb_window_t root : display.roots()) {
    const std::vector<std::uint32_t> windows = managedWindows(display, root);
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
      if (belongsTo(display, *window, process))
        return display.requestActivation(root, *window) ? RaiseResult::kRaised : RaiseResult::kFailed;
    }
  }
  return display.isConnected() ? RaiseResult::kNotFound : RaiseResult::kFailed;
}

constexpr std::chrono::seconds kBusTimeout(1);  // per bus

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

std::string environmentVariable(const char* variable) {
  return orEmpty(std::getenv(variable));
}

std::string socketAddress(const std::string& path) {
  if (::access(path.c_str(), F_OK) != 0) return "";
  const Owned<gchar, g_free> escaped(g_dbus_address_escape_value(path.c_str()));
  return std::string("unix:path=") + escaped.get();
}

// Removes the entries of an address list that would start a bus.
std::string runningBuses(std::string_view addresses) {
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

// "" if no bus is running.
std::string sessionBus() {
  const std::string address = environmentVariable("DBUS_SESSION_BUS_ADDRESS");
  if (!address.empty()) return runningBuses(address);
  const std::string folder = environmentVariable("XDG_RUNTIME_DIR");
  return folder.empty() ? "" : socketAddress(folder + "/bus");
}

std::string systemBus() {
  const std::string address = environmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
  return address.empty() ? socketAddress("/run/dbus/system_bus_socket") : runningBuses(address);
}

void emit(const std::string& address, const Signal& signal) {
  constexpr auto kFlags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  TimedCalls calls(kBusTimeout);
  g_dbus_connection_new_for_address(address.c_str(), kFlags, nullptr, calls.cancellable(), TimedCalls::storeResult,
                                    &calls);
  const Owned<GDBusConnection> bus(g_dbus_connection_new_for_address_finish(calls.result().get(), nullptr));
  if (!bus) return;
  g_dbus_connection_emit_signal(bus.get(), nullptr, signal.path.c_str(), signal.interface.c_str(),
                                signal.member.c_str(), nullptr, nullptr);
  g_dbus_connection_flush(bus.get(), calls.cancellable(), TimedCalls::storeResult, &calls);
  g_dbus_connection_flush_finish(bus.get(), calls.result().get(), nullptr);
  g_dbus_connection_close(bus.get(), calls.cancellable(), TimedCalls::storeResult, &calls);
  g_dbus_connection_close_finish(bus.get(), calls.result().get(), nullptr);
}

}  // namespace

bool openUrl(const std::string& url) {
  if (!isUrl(url) || !hasDisplay()) return false;
  TimedCalls calls(kLaunchTimeout);
  const Launch launch(calls.cancellable());
  g_app_info_launch_default_for_uri_async(url.c_str(), launch.context(), calls.cancellable(), TimedCalls::storeResult,
                                          &calls);
  GError* failure = nullptr;
  if (g_app_info_launch_default_for_uri_finish(calls.result().get(), &failure) == TRUE) return true;
  const Owned<GError, g_error_free> error(failure);
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) == TRUE && launch.isDone();
}

LaunchResult launchInForeground(const std::string& path, const std::vector<std::string>& /*arguments*/) {
  struct stat item {};
  if (::stat(path.c_str(), &item) == 0) return {};
  const int error = errno;
  const char* const name = ::strerrorname_np(error);
  return {false, ReferenceFailure{name == nullptr ? std::to_string(error) : name, errorText(error)}};
}

// Runs on a detached thread, because an X client waits without limit for the reply of a stalled server.
RaiseResult raiseWindow(pid_t process) {
  constexpr std::chrono::seconds kTimeout(2);
  const auto promise = std::make_shared<std::promise<RaiseResult>>();
  std::future<RaiseResult> result = promise->get_future();
  if (!runDetached([promise, process] { promise->set_value(raiseTopmostWindow(process)); }))
    return RaiseResult::kFailed;
  return result.wait_for(kTimeout) == std::future_status::ready ? result.get() : RaiseResult::kFailed;
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
