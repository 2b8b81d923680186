// Prints the results of a benchmark: one line per figure, with its limit.
//
//   figure                                  ours      peer  unit   ratio  bar
//   start of the program to its message      412       405  ms     1.017  ≤ 1.05  ok
//   a filtered-out call                     1.31            ns            ≤ 5     ok
//
// A missed limit does not fail the benchmark. It fails only if it could not measure.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace bench {

// The median; of an even number of values, the upper of the two middle ones. `values` must not be empty.
//   {3, 1, 2}  => 2
inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Repeated measurements of a figure. Each pair is our value and, directly after it, the value of the peer.
class Pairs {
 public:
  void add(double ours, double peer) {
    ours_.push_back(ours);
    peer_.push_back(peer);
    ratios_.push_back(ours / peer);
  }

  std::size_t size() const { return ratios_.size(); }
  double ours() const { return median(ours_); }
  double peer() const { return median(peer_); }

  // The median of the ratios of the pairs: temporary load on the machine affects both values of a pair.
  double ratio() const { return median(ratios_); }

 private:
  std::vector<double> ours_;
  std::vector<double> peer_;
  std::vector<double> ratios_;
};

struct Bar {
  enum Side { kAtMost, kAtLeast };

  bool holds(double value) const { return side == kAtMost ? value <= limit : value >= limit; }

  Side side;
  double limit;
};

inline Bar atMost(double limit) {
  return {Bar::kAtMost, limit};
}

inline Bar atLeast(double limit) {
  return {Bar::kAtLeast, limit};
}

// Three significant digits, or more if the integer part has more.
//   1.234  => "1.23"
//   41.27  => "41.3"
//   81270  => "81270"
inline std::string shortNumber(double value) {
  const int decimals = value >= 100 ? 0 : value >= 10 ? 1 : 2;
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

// Pads UTF-8 text to `width` characters, not bytes.
inline std::string padded(const std::string& text, std::size_t width) {
  const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  const auto length = static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isFirstByte));
  return text + std::string(length < width ? width - length : 0, ' ');
}

inline void printRow(const std::string& name, const std::string& ours, const std::string& peer, const std::string& unit,
                     const std::string& ratio, const std::string& bar, const std::string& verdict) {
  std::printf("%s %10s %10s  %s %s %s %s\n", padded(name, 46).c_str(), ours.c_str(), peer.c_str(),
              padded(unit, 8).c_str(), padded(ratio, 7).c_str(), padded(bar, 8).c_str(), verdict.c_str());
  std::fflush(stdout);
}

inline void printHead() {
  printRow("figure", "ours", "peer", "unit", "ratio", "bar", "");
}

inline void printVerdict(const std::string& name, const std::string& ours, const std::string& peer,
                         const std::string& unit, const std::string& ratio, Bar bar, double measured) {
  char limit[32];
  std::snprintf(limit, sizeof limit, "%s %g", bar.side == Bar::kAtMost ? "≤" : "≥", bar.limit);
  printRow(name, ours, peer, unit, ratio, limit, bar.holds(measured) ? "ok" : "missed");
}

inline std::string textOf(double ratio) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", ratio);
  return text;
}

// A figure with a peer. The limit applies to the ratio.
inline void print(const std::string& name, const Pairs& pairs, const std::string& unit, Bar bar) {
  printVerdict(name, shortNumber(pairs.ours()), shortNumber(pairs.peer()), unit, textOf(pairs.ratio()), bar,
               pairs.ratio());
}

// A figure with a peer and without a limit.
inline void print(const std::string& name, const Pairs& pairs, const std::string& unit) {
  printRow(name, shortNumber(pairs.ours()), shortNumber(pairs.peer()), unit, textOf(pairs.ratio()), "", "");
}

// A figure without a peer. The limit applies to the value.
inline void print(const std::string& name, double ours, const std::string& unit, Bar bar) {
  printVerdict(name, shortNumber(ours), "", unit, "", bar, ours);
}

}  // namespace bench
