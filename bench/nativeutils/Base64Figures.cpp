#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/nativeutils/Figures.h"
#include "nativeutils/Base64.h"

namespace bench {
namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

// Bytes without a NUL among them, since some of the functions stop there, and without need for padding.
std::string makeBytes(std::size_t size) {
  std::minstd_rand random;
  std::string bytes(size / 3 * 3, '\0');
  for (char& byte : bytes)
    byte = static_cast<char>(1 + random() % 255);
  return bytes;
}

std::string wrapped(const std::string& text, std::size_t lineLength) {
  std::string lines;
  for (std::size_t i = 0; i < text.size(); i += lineLength)
    lines.append(text, i, lineLength) += '\n';
  return lines;
}

void require(bool right) {
  if (!right) throw std::runtime_error("the Base64 codec is wrong");
}

// The peer's output is new memory as ours is, and not even filled with zeros.
template <typename Function>
std::size_t byPeer(Function function, const std::string& in, std::size_t room) {
  const std::unique_ptr<unsigned char[]> out(new unsigned char[room]);
  const int size = function(out.get(), reinterpret_cast<const unsigned char*>(in.data()), static_cast<int>(in.size()));
  return static_cast<std::size_t>(size);
}

// The fastest of some calls: a call is so short that whoever else is at work would decide the figure.
template <typename Body>
double secondsOfOne(int times, const Body& body) {
  double fastest = secondsOf(body);
  for (int i = 1; i < times; ++i)
    fastest = std::min(fastest, secondsOf(body));
  return fastest;
}

template <typename Ours, typename Peer>
Pairs speeds(std::size_t size, const Ours& ours, const Peer& peer) {
  const double megabytes = static_cast<double>(size) / 1e6;
  const int times = size > 8 * mebibyte ? 1 : 16;
  Pairs pairs;
  for (int i = 0; i < repetitions; ++i) {
    const double first = megabytes / secondsOfOne(times, ours);
    pairs.add(first, megabytes / secondsOfOne(times, peer));
  }
  return pairs;
}

std::string decoded(const std::string& text) {
  std::string bytes;
  bool ok = false;
  Base64Decode(text.begin(), text.end(), std::back_inserter(bytes), ok);
  require(ok);
  return bytes;
}

void measureEncoding(const std::string& size, const std::string& bytes) {
  std::string text;
  Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(text));
  require(decoded(text) == bytes);
  const auto peer = [&] { require(byPeer(EVP_EncodeBlock, bytes, text.size() + 1) == text.size()); };

  const auto iterators = [&] {
    std::string out;
    Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(out));
    require(out.size() == text.size());
  };
  print("Base64Encode, " + size + ", against OpenSSL", speeds(bytes.size(), iterators, peer), "MB/s", atLeast(1.5));

  const auto function = [&] {
    std::string out;
    require(utilEncodeDataInBase64(bytes.c_str(), 1, out) && out.size() == text.size());
  };
  print("utilEncodeDataInBase64, " + size, speeds(bytes.size(), function, peer), "MB/s", atLeast(1.5));
}

void measureDecoding(const std::string& size, const std::string& bytes) {
  std::string text;
  Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(text));
  const auto clean = [&] { require(decoded(text).size() == bytes.size()); };

  const auto peer = [&] { require(byPeer(EVP_DecodeBlock, text, bytes.size()) == bytes.size()); };
  print("Base64Decode, " + size + ", against OpenSSL", speeds(bytes.size(), clean, peer), "MB/s", atLeast(1.3));

  const auto function = [&] {
    std::string out;
    require(utilDecodeBase64Data(text.c_str(), 1, out) && out.size() == bytes.size());
  };
  print("utilDecodeBase64Data, " + size, speeds(bytes.size(), function, peer), "MB/s", atLeast(1.3));

  // Those of 77 end inside groups.
  for (const unsigned lineLength : {76u, 77u}) {
    const std::string lines = wrapped(text, lineLength);
    require(decoded(lines) == bytes);
    const auto broken = [&] { require(decoded(lines).size() == bytes.size()); };
    print("lines of " + std::to_string(lineLength) + ", " + size + ", against none",
          speeds(bytes.size(), broken, clean), "MB/s", atLeast(lineLength == 76 ? 0.5 : 0.4));
  }
}

}  // namespace

void measureBase64() {
  for (const unsigned mebibytes : {1u, 64u}) {
    const std::string size = std::to_string(mebibytes) + " MiB";
    const std::string bytes = makeBytes(mebibytes * mebibyte);
    measureEncoding(size, bytes);
    measureDecoding(size, bytes);
  }
}

}  // namespace bench
