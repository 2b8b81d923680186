#include "tests/tools/hand/Picture.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "platform/linux/Glib.h"

namespace tools {

Picture::Picture(int width, int height, std::vector<std::uint8_t> pixels)
    : width_(width), height_(height), pixels_(std::move(pixels)) {}

unsigned Picture::colorAt(int x, int y) const {
  const std::uint8_t* pixel = &pixels_[3 * static_cast<std::size_t>(y * width_ + x)];
  return static_cast<unsigned>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
}

std::optional<Area> Picture::find(unsigned color, int pixels) const {
  int left = width_, top = height_, right = -1, bottom = -1, count = 0;
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      if (colorAt(x, y) != color) continue;
      left = std::min(left, x);
      top = std::min(top, y);
      right = std::max(right, x);
      bottom = std::max(bottom, y);
      ++count;
    }
  }
  if (count < pixels) return std::nullopt;
  return Area{left, top, right - left + 1, bottom - top + 1};
}

void Picture::savePng(const std::string& path) const {
  const platform::Owned<GdkPixbuf> image(gdk_pixbuf_new_from_data(pixels_.data(), GDK_COLORSPACE_RGB, FALSE, 8, width_,
                                                                  height_, 3 * width_, nullptr, nullptr));
  g_autoptr(GError) error = nullptr;
  if (!gdk_pixbuf_save(image.get(), path.c_str(), "png", &error, nullptr)) throw std::runtime_error(error->message);
}

}  // namespace tools
