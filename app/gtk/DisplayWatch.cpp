#include "app/gtk/DisplayWatch.h"

#include <X11/Xlib.h>
#include <gdk/gdkwayland.h>
#include <poll.h>
#include <unistd.h>
#include <wayland-client-core.h>

#include <cstdlib>
#include <utility>

#include "app/gtk/Glib.h"

namespace {

std::function<void()> displayLost;

// Exit handlers may use the display and report its loss again.
[[noreturn]] void endWithoutDisplay() {
  static bool ending = false;
  if (std::exchange(ending, true)) ::_exit(1);
  if (displayLost) displayLost();
  std::exit(1);
}

int onServerLost(Display*) {
  endWithoutDisplay();
}

// GDK writes to the compositor before each wait and ends the process if that fails. This source has a higher priority
// than GDK's and checks the connection first, before and after the wait.
struct CompositorWatch {
  GSource source;
  int connection;
};

bool isLost(GSource* source) {
  pollfd connection{reinterpret_cast<CompositorWatch*>(source)->connection, 0, 0};
  return ::poll(&connection, 1, 0) == 1 && (connection.revents & (POLLHUP | POLLERR)) != 0;
}

gboolean beforeWait(GSource* source, int* timeout) {
  *timeout = -1;
  return isLost(source) ? TRUE : FALSE;
}

gboolean afterWait(GSource* source) {
  return isLost(source) ? TRUE : FALSE;
}

gboolean onCompositorLost(GSource*, GSourceFunc, void*) {
  endWithoutDisplay();
}

void watchCompositor(GdkWaylandDisplay* display) {
  static GSourceFuncs functions = {beforeWait, afterWait, onCompositorLost, nullptr, nullptr, nullptr};
  const Owned<GSource, g_source_unref> source(g_source_new(&functions, sizeof(CompositorWatch)));
  const int connection = wl_display_get_fd(gdk_wayland_display_get_wl_display(display));
  reinterpret_cast<CompositorWatch*>(source.get())->connection = connection;
  g_source_add_unix_fd(source.get(), connection, static_cast<GIOCondition>(G_IO_HUP | G_IO_ERR));
  g_source_set_priority(source.get(), G_PRIORITY_HIGH);
  g_source_attach(source.get(), nullptr);
}

}  // namespace

DisplayWatch::DisplayWatch(std::function<void()> onLost) {
  displayLost = std::move(onLost);
  (void)XSetIOErrorHandler(onServerLost);
  GdkDisplay* const display = gdk_display_get_default();
  if (GDK_IS_WAYLAND_DISPLAY(display)) watchCompositor(GDK_WAYLAND_DISPLAY(display));
}

DisplayWatch::~DisplayWatch() {
  displayLost = nullptr;
}
