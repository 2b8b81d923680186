// Makes the spinner image and prints it as a C string literal of its base64 text (RFC 4648, section 4).
//
// The image is a GIF89a animation (CompuServe, 1990) of 64 x 64 pixels: a ring of twelve dots around which five
// blue ones move, a fifth of a second a step, for ever. The first frame draws the whole ring, each later one only the
// blue dots and the one that turns grey behind them, over what stands there. A comment block brings the file to exactly
// 1,949 bytes.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int kSide = 64;
constexpr int kFrames = 12;
constexpr int kFrameDelay = 20;  // hundredths of a second
constexpr std::size_t kFileSize = 1949;

enum Colour : std::uint8_t { kGrey = 0, kBlue = 1, kTransparent = 2 };

struct Point {
  int x, y;
};

// Centres of the dots in half pixels from the middle of the image, clockwise from the top.
constexpr std::array<Point, kFrames> kDots = {{{0, -48},
                                               {24, -42},
                                               {42, -24},
                                               {48, 0},
                                               {42, 24},
                                               {24, 42},
                                               {0, 48},
                                               {-24, 42},
                                               {-42, 24},
                                               {-48, 0},
                                               {-42, -24},
                                               {-24, -42}}};
constexpr int kDotRadius = 9;  // half pixels

struct Box {
  int left, top, width, height;
};

constexpr int kBlueDots = 5;

bool inDot(int dot, int x, int y) {
  const int dx = 2 * x - (kSide - 1) - kDots[static_cast<std::size_t>(dot)].x;
  const int dy = 2 * y - (kSide - 1) - kDots[static_cast<std::size_t>(dot)].y;
  return dx * dx + dy * dy <= kDotRadius * kDotRadius;
}

Colour pixel(int frame, int x, int y) {
  for (int dot = 0; dot < kFrames; ++dot) {
    if (inDot(dot, x, y)) return (frame - dot + kFrames) % kFrames < kBlueDots ? kBlue : kGrey;
  }
  return kTransparent;
}

// The smallest box around `count` dots that end with `last`.
Box boxAround(int last, int count) {
  int left = kSide, top = kSide, right = 0, bottom = 0;
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      bool inside = false;
      for (int back = 0; back < count; ++back)
        inside = inside || inDot((last - back + kFrames) % kFrames, x, y);
      if (!inside) continue;
      left = std::min(left, x);
      right = std::max(right, x);
      top = std::min(top, y);
      bottom = std::max(bottom, y);
    }
  }
  return {left, top, right - left + 1, bottom - top + 1};
}

// Collects codes of growing width, lowest bit first (GIF89a, appendix F).
class CodeStream {
 public:
  void put(unsigned code, unsigned width) {
    bits_ |= code << count_;
    for (count_ += width; count_ >= 8; count_ -= 8) {
      bytes_ += static_cast<char>(bits_ & 0xFF);
      bits_ >>= 8;
    }
  }

  std::string finish() {
    if (count_ > 0) bytes_ += static_cast<char>(bits_ & 0xFF);
    return bytes_;
  }

 private:
  std::string bytes_;
  unsigned bits_ = 0;
  unsigned count_ = 0;
};

constexpr unsigned kMinimumCodeSize = 2;

std::string compress(const std::vector<Colour>& pixels) {
  constexpr unsigned kClear = 1U << kMinimumCodeSize;
  constexpr unsigned kEnd = kClear + 1;
  std::map<std::pair<unsigned, Colour>, unsigned> table;
  unsigned next = kEnd + 1;
  unsigned width = kMinimumCodeSize + 1;
  CodeStream codes;

  codes.put(kClear, width);
  unsigned prefix = pixels.front();
  for (std::size_t i = 1; i < pixels.size(); ++i) {
    const auto known = table.find({prefix, pixels[i]});
    if (known != table.end()) {
      prefix = known->second;
      continue;
    }
    codes.put(prefix, width);
    table[{prefix, pixels[i]}] = next;
    if (next == 1U << width) ++width;
    ++next;
    prefix = pixels[i];
  }
  codes.put(prefix, width);
  codes.put(kEnd, width);
  return codes.finish();
}

void appendNumber(std::string& out, int value) {
  out += static_cast<char>(value & 0xFF);
  out += static_cast<char>(value >> 8);
}

void appendBlocks(std::string& out, const std::string& data) {
  for (std::size_t at = 0; at < data.size(); at += 255) {
    const std::string block = data.substr(at, 255);
    out += static_cast<char>(block.size());
    out += block;
  }
  out += '\0';
}

std::string header() {
  std::string out = "GIF89a";
  appendNumber(out, kSide);
  appendNumber(out, kSide);
  constexpr char kGlobalTableOfFour = '\x91';
  out += kGlobalTableOfFour;
  out += std::string("\x02\x00", 2);  // background: the transparent colour; no aspect ratio
  out += std::string("\x65\x65\x65\x00\x8B\xD9\xFF\xFF\xFF\x00\x00\x00", 12);
  out += std::string("\x21\xFF\x0BNETSCAPE2.0\x03\x01\x00\x00\x00", 19);  // repeat for ever
  return out;
}

std::string frame(int index) {
  const Box box = index == 0 ? Box{0, 0, kSide, kSide} : boxAround(index, kBlueDots + 1);
  std::vector<Colour> pixels;
  for (int y = box.top; y < box.top + box.height; ++y) {
    for (int x = box.left; x < box.left + box.width; ++x)
      pixels.push_back(pixel(index, x, y));
  }

  constexpr char kKeepWhatStandsAndTransparent = '\x05';
  std::string out = "\x21\xF9\x04";
  out += kKeepWhatStandsAndTransparent;
  appendNumber(out, kFrameDelay);
  out += static_cast<char>(kTransparent);
  out += std::string("\x00\x2C", 2);
  appendNumber(out, box.left);
  appendNumber(out, box.top);
  appendNumber(out, box.width);
  appendNumber(out, box.height);
  out += '\0';
  out += static_cast<char>(kMinimumCodeSize);
  appendBlocks(out, compress(pixels));
  return out;
}

// A comment block of exactly `size` bytes.
std::string comment(std::size_t size) {
  constexpr std::size_t kFrame = 4;  // two bytes of introduction, a length, a terminator
  if (size <= kFrame || size - kFrame > 255) {
    std::fprintf(stderr, "MakeSpinner: a comment cannot fill %zu bytes\n", size);
    std::exit(1);
  }
  std::string text = "A ring of twelve dots; made by MakeSpinner. ";
  text.resize(size - kFrame, '.');
  std::string out = "\x21\xFE";
  appendBlocks(out, text);
  return out;
}

std::string base64(const std::string& data) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t i = 0; i < data.size(); i += 3) {
    unsigned group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (i + k < data.size() ? static_cast<unsigned char>(data[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      out += k <= data.size() - i ? kAlphabet[group >> (18 - 6 * k) & 63] : '=';
    }
  }
  return out;
}

}  // namespace

int main() {
  std::string image = header();
  std::string frames;
  for (int i = 0; i < kFrames; ++i)
    frames += frame(i);

  constexpr char kTrailer = ';';
  image += comment(kFileSize - image.size() - frames.size() - 1) + frames + kTrailer;
  std::printf("\"%s\"\n", base64(image).c_str());
  return 0;
}
