#include "app/SpinnerPage.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string_view>

namespace {

constexpr std::string_view kBefore =
    "<html><head><style type=\"text/css\">body{overflow: hidden;margin: 0px!important;padding: 0px!important;}"
    "div.image {width: 680;height: 550;background-repeat: no-repeat;right: 0px;background-position: center; "
    "center;background-image: url('data:image/gif;base64,";
constexpr std::string_view kAfter = "');}.container{\t}</style></head><body><div class=\"image\"></div></body></html>";

std::string imageText() {
  return spinnerHTMLSource.substr(kBefore.size(), spinnerHTMLSource.size() - kBefore.size() - kAfter.size());
}

std::string decoded(const std::string& base64) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned bits = 0, count = 0;
  for (const char c : base64) {
    const std::size_t value = kAlphabet.find(c);
    if (value == std::string_view::npos) break;
    bits = bits << 6 | static_cast<unsigned>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

unsigned littleEndianAt(const std::string& bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes.at(at)) | static_cast<unsigned>(static_cast<unsigned char>(bytes.at(at + 1)))
                                                        << 8;
}

std::size_t afterBlocks(const std::string& gif, std::size_t at) {
  while (gif.at(at) != 0)
    at += static_cast<unsigned char>(gif.at(at)) + 1u;
  return at + 1;
}

struct Animation {
  int frames = 0;
  bool everyDelayIs20 = true;
  bool everyTransparentIndexIs2 = true;
  bool loopsEndlessly = false;
  bool endsWithTrailer = false;
};

Animation animationOf(const std::string& gif) {
  Animation found;
  std::size_t at = 13 + 12;
  while (gif.at(at) != ';') {
    if (gif.at(at) == '\x2C') {
      ++found.frames;
      at = afterBlocks(gif, at + 11);
      continue;
    }
    const char label = gif.at(at + 1);
    if (label == '\xF9') {
      found.everyDelayIs20 &= littleEndianAt(gif, at + 4) == 20;
      found.everyTransparentIndexIs2 &= (gif.at(at + 3) & 1) == 1 && gif.at(at + 6) == 2;
    }
    if (label == '\xFF')
      found.loopsEndlessly = gif.compare(at + 3, 11, "NETSCAPE2.0") == 0 && littleEndianAt(gif, at + 16) == 0;
    at = afterBlocks(gif, at + 2);
  }
  found.endsWithTrailer = at + 1 == gif.size();
  return found;
}

TEST(SpinnerPage, TextAroundTheImageIsFixed) {
  EXPECT_EQ(spinnerHTMLSource.compare(0, kBefore.size(), kBefore), 0);
  EXPECT_EQ(spinnerHTMLSource.compare(spinnerHTMLSource.size() - kAfter.size(), kAfter.size(), kAfter), 0);
  EXPECT_EQ(imageText().size(), 2600u);
}

TEST(SpinnerPage, ImageHas1949Bytes) {
  EXPECT_EQ(decoded(imageText()).size(), 1949u);
}

TEST(SpinnerPage, ImageIs64By64WithFourColors) {
  const std::string gif = decoded(imageText());
  EXPECT_EQ(gif.substr(0, 6), "GIF89a");
  EXPECT_EQ(littleEndianAt(gif, 6), 64u);
  EXPECT_EQ(littleEndianAt(gif, 8), 64u);
  EXPECT_EQ(gif.at(10) & 0x87, 0x81);  // a global color table of four entries
  EXPECT_EQ(gif.substr(13, 6), "\x65\x65\x65" + std::string("\x00\x8B\xD9", 3));
}

TEST(SpinnerPage, ImageHasTwelveFramesAndLoopsEndlessly) {
  const Animation found = animationOf(decoded(imageText()));
  EXPECT_EQ(found.frames, 12);
  EXPECT_TRUE(found.everyDelayIs20);
  EXPECT_TRUE(found.everyTransparentIndexIs2);
  EXPECT_TRUE(found.loopsEndlessly);
  EXPECT_TRUE(found.endsWithTrailer);
}

TEST(SpinnerPage, PathIsASiblingOfTheBundle) {
  EXPECT_EQ(spinnerPagePath("/opt/kelvo"), "/opt/kelvospinner_html.html");
}

TEST(SpinnerPage, AddressEncodesSpaces) {
  EXPECT_EQ(spinnerPageURL("/Program Files/My App"), "file:///Program%20Files/My%20App");
}

TEST(SpinnerPage, AddressEncodesDelimitersAndNonAsciiBytes) {
  EXPECT_EQ(spinnerPageURL("/a#b?c%d[e]\"f|g\\h"), "file:///a%23b%3Fc%25d%5Be%5D%22f%7Cg%5Ch");
  EXPECT_EQ(spinnerPageURL("/ä"), "file:///%C3%A4");
}

TEST(SpinnerPage, AddressKeepsPathPunctuation) {
  EXPECT_EQ(spinnerPageURL("/a-b._~!$&'()*+,;=:@"), "file:///a-b._~!$&'()*+,;=:@");
}

}  // namespace
