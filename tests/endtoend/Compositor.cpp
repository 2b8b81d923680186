#include "tests/endtoend/Compositor.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/UniqueFd.h"
#include "platform/linux/Glib.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {

using platform::Owned;
using tools::ChildProcess;
using tools::Picture;

namespace {

constexpr std::chrono::seconds kWestonTimeout{30};
constexpr char kSocket[] = "wayland";

ChildProcess::Setup setupFor(const std::filesystem::path& folder) {
  ChildProcess::Setup setup;
  setup.command = {"weston",
                   "--backend=headless-backend.so",
                   "--no-config",
                   "--use-pixman",
                   "--width=1280",
                   "--height=1024",
                   "--debug",                             // allows screenshots
                   "--log=" + (folder / "log").string(),  // continues after the socket exists
                   std::string("--socket=") + kSocket};
  setup.environment = {{"XDG_RUNTIME_DIR", folder}};
  setup.outputFile = "/dev/null";
  setup.errorFile = "/dev/null";
  return setup;
}

// The socket's file exists before it accepts connections.
bool acceptsConnections(const std::filesystem::path& socket) {
  const std::string path = socket;
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return false;
  std::copy(path.begin(), path.end(), address.sun_path);
  const platform::UniqueFd end(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  return ::connect(end.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

Picture load(const std::filesystem::path& file) {
  g_autoptr(GError) error = nullptr;
  const Owned<GdkPixbuf> image(gdk_pixbuf_new_from_file(file.c_str(), &error));
  if (!image) throw std::runtime_error(error->message);
  const int width = gdk_pixbuf_get_width(image.get()), height = gdk_pixbuf_get_height(image.get());
  const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(image.get()));
  std::vector<std::uint8_t> pixels;
  for (int y = 0; y < height; ++y) {
    const guint8* pixel = gdk_pixbuf_read_pixels(image.get()) + y * gdk_pixbuf_get_rowstride(image.get());
    for (int x = 0; x < width; ++x, pixel += channels)
      pixels.insert(pixels.end(), pixel, pixel + 3);
  }
  return Picture(width, height, std::move(pixels));
}

}  // namespace

bool Compositor::isPossible() {
  const Owned<char, g_free> weston(g_find_program_in_path("weston"));
  return weston != nullptr;
}

Compositor::Compositor(const std::filesystem::path& folder)
    : folder_(folder), watched_(folder), process_(setupFor(folder)) {
  const auto isReady = [this] { return acceptsConnections(folder_ / kSocket) || process_.ended(); };
  if (!tools::waitUntil(isReady, kWestonTimeout) || process_.ended()) {
    throw std::runtime_error("weston does not start");
  }
}

std::map<std::string, std::string> Compositor::environment() const {
  return {{"XDG_RUNTIME_DIR", folder_}, {"WAYLAND_DISPLAY", kSocket}, {"GDK_BACKEND", "wayland"}};
}

std::optional<Picture> Compositor::picture() const {
  const std::filesystem::path pictures = folder_ / "pictures";
  std::filesystem::create_directory(pictures);
  ChildProcess::Setup setup;
  setup.command = {"env", "--chdir=" + pictures.string(), "weston-screenshooter"};
  setup.environment = environment();
  setup.errorFile = "/dev/null";
  const ChildProcess camera(setup);
  (void)tools::waitUntil([&] { return camera.ended(); }, kWestonTimeout);
  const std::filesystem::directory_iterator taken(pictures);
  if (camera.exitStatus() != 0 || taken == std::filesystem::directory_iterator()) return std::nullopt;
  Picture picture = load(taken->path());
  std::filesystem::remove_all(pictures);
  return picture;
}

}  // namespace endtoend
