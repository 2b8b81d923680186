#include "app/gtk/page/FitSearch.h"

#include <algorithm>

namespace {

// Heights are rounded to whole pixels: one pixel of an area of 550 does not count.
constexpr double kMaxHeight = 1.002;

constexpr int kMaxGuesses = 3;

}  // namespace

std::optional<int> FitSearch::measured(double height) {
  if (height > kMaxHeight) {
    tooLarge_ = next_;
    guess_ = static_cast<int>(next_ / height);
    ++misses_;
  } else {
    fitting_ = next_;
  }
  const std::optional<int> next = chooseNext();
  if (next) next_ = *next;
  return next;
}

std::optional<int> FitSearch::chooseNext() const {
  if (tooLarge_ <= kMin || fitting_ >= kMax) return std::nullopt;

  // A page whose height follows the height of its area misses every guess.
  if (!fits()) return misses_ > kMaxGuesses ? kMin : std::clamp(guess_, kMin, tooLarge_ - 1);

  if (!mayGrow_ || tooLarge_ - fitting_ <= 1) return std::nullopt;
  if (tooLarge_ > kMax) return kMax;
  if (fitting_ > guess_ || misses_ > kMaxGuesses) return (fitting_ + tooLarge_) / 2;
  return std::max(guess_, fitting_ + 1);
}
