// A screenshot of a part of the screen.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tools {

struct Area {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

class Picture {
 public:
  // `pixels`: row by row, one byte each for red, green and blue.
  Picture(int width, int height, std::vector<std::uint8_t> pixels);

  int width() const { return width_; }
  int height() const { return height_; }

  //   0xRRGGBB
  unsigned colorAt(int x, int y) const;

  // Returns the smallest area with every pixel of exactly this color, if there are at least `pixels` of them.
  std::optional<Area> find(unsigned color, int pixels = 50) const;

  // Throws std::runtime_error if the file cannot be written.
  void savePng(const std::string& path) const;

 private:
  int width_;
  int height_;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace tools
