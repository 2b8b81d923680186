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

// 1 MiB without a NUL, where some of the functions stop, and without padding.
std::string makeBytes() {
  constexpr std::size_t kSize = (std::size_t{1} << 20) / 3 * 3;
  std::minstd_rand random;
  std::string bytes(kSize, '\0');
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

void require(bool condition) {
  if (!condition) throw std::runtime_error("the Base64 codec returned a wrong result");
}

// The peer writes to newly allocated memory too, which is not even filled with zeros.
template <typename Function>
std::size_t runPeer(Function function, const std::string& in, std::size_t capacity) {
  const std::unique_ptr<unsigned char[]> out(new unsigned char[capacity]);
  const int size = function(out.get(), reinterpret_cast<const unsigned char*>(in.data()), static_cast<int>(in.size()));
  return static_cast<std::size_t>(size);
}

// The minimum of several calls: a call is so short that other load on the machine would dominate a mean.
template <typename Body>
double shortestSeconds(const Body& body) {
  constexpr int kCalls = 16;
  double shortest = secondsOf(body);
  for (int i = 1; i < kCalls; ++i)
    shortest = std::min(shortest, secondsOf(body));
  return shortest;
}

template <typename Ours, typename Peer>
Pairs megabytesPerSecond(std::size_t size, const Ours& ours, const Peer& peer) {
  const double megabytes = static_cast<double>(size) / 1e6;
  Pairs pairs;
  for (int i = 0; i < kRepetitions; ++i) {
    const double first = megabytes / shortestSeconds(ours);
    pairs.add(first, megabytes / shortestSeconds(peer));
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

void measureEncoding(const std::string& bytes, const std::string& text) {
  const auto peer = [&] { require(runPeer(EVP_EncodeBlock, bytes, text.size() + 1) == text.size()); };
  const auto iterators = [&] {
    std::string out;
    Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(out));
    require(out.size() == text.size());
  };
  print("Base64Encode, 1 MiB, against OpenSSL", megabytesPerSecond(bytes.size(), iterators, peer), "MB/s",
        atLeast(1.5));

  const auto function = [&] {
    std::string out;
    require(utilEncodeDataInBase64(bytes.c_str(), 1, out) && out.size() == text.size());
  };
  print("utilEncodeDataInBase64, 1 MiB", megabytesPerSecond(bytes.size(), function, peer), "MB/s", atLeast(1.5));
}

void measureDecoding(const std::string& bytes, const std::string& text) {
  const auto peer = [&] { require(runPeer(EVP_DecodeBlock, text, bytes.size()) == bytes.size()); };
  const auto unwrapped = [&] { require(decoded(text).size() == bytes.size()); };
  print("Base64Decode, 1 MiB, against OpenSSL", megabytesPerSecond(bytes.size(), unwrapped, peer), "MB/s",
        atLeast(1.3));

  const auto function = [&] {
    std::string out;
    require(utilDecodeBase64Data(text.c_str(), 1, out) && out.size() == bytes.size());
  };
  print("utilDecodeBase64Data, 1 MiB", megabytesPerSecond(bytes.size(), function, peer), "MB/s", atLeast(1.3));

  // Lines of 77 characters break inside groups.
  for (const unsigned lineLength : {76u, 77u}) {
    const std::string lines = wrapped(text, lineLength);
    require(decoded(lines) == bytes);
    const auto broken = [&] { require(decoded(lines).size() == bytes.size()); };
    print("lines of " + std::to_string(lineLength) + ", 1 MiB, against one line",
          megabytesPerSecond(bytes.size(), broken, unwrapped), "MB/s", atLeast(lineLength == 76 ? 0.5 : 0.4));
  }
}

}  // namespace

void measureBase64() {
  const std::string bytes = makeBytes();
  std::string text;
  Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(text));
  require(decoded(text) == bytes);
  measureEncoding(bytes, text);
  measureDecoding(bytes, text);
}

}  // namespace bench
