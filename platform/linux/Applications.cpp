#include "platform/Applications.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "platform/Url.h"
#include "platform/linux/TimedCalls.h"

namespace platform {
namespace {

constexpr std::chrono::seconds kPatience(2);  // with a bus that does not answer

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

}  // namespace

bool openUrl(const std::string& url) {
  if (!isUrl(url) || !hasDisplay()) return false;
  TimedCalls calls(kPatience);
  const Launch launch(calls.end());
  g_app_info_launch_default_for_uri_async(url.c_str(), launch.context(), calls.end(), TimedCalls::keepResult, &calls);
  GError* failure = nullptr;
  if (g_app_info_launch_default_for_uri_finish(calls.result().get(), &failure) == TRUE) return true;
  const Owned<GError> error(failure);
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) == TRUE && launch.isDone();
}

FrontLaunch launchInFront(const std::string& path, const std::vector<std::string>& /*arguments*/) {
  struct stat item {};
  if (::stat(path.c_str(), &item) == 0) return {};
  const int error = errno;
  const char* const name = ::strerrorname_np(error);
  return {false, ReferenceFailure{name == nullptr ? std::to_string(error) : name, g_strerror(error)}};
}

}  // namespace platform
