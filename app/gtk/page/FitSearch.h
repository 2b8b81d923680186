// Finds the zoom at which a page fits into its area: the largest one between 100 % and 50 %, in whole percent.
//
//   FitSearch search(100, true);
//   search.measured(1.6)   => 62        (at 100 % the page is 1.6 times as tall as its area: measure it at 62 %)
//   search.measured(1)     => 63        (it fits; a page whose text wraps may fit at a larger zoom)
//   search.measured(1.03)  => nothing   (the search is over)
//   search.zoom()          => 62
//
// - Ends for every sequence of heights, after 12 measurements at most.
// - A page that does not fit at 50 % gets 50 %.
// - A height that is not a number counts as one that fits.
// Plain C++.

#pragma once

#include <optional>

class FitSearch {
 public:
  static constexpr int kMin = 50;
  static constexpr int kMax = 100;

  // `shown`: the page's present zoom in percent, at which it is measured first. Unless it `mayGrow`, a page gets the
  // first zoom at which it fits.
  FitSearch(int shown, bool mayGrow) : next_(shown), mayGrow_(mayGrow) {}

  // Takes the page's height at the zoom measured last, as a multiple of the height of its area. Returns the zoom to
  // measure at next, or nothing if the search is over.
  std::optional<int> measured(double height);

  // The result, once the search is over.
  int zoom() const { return fits() ? fitting_ : kMin; }
  bool fits() const { return fitting_ != 0; }

 private:
  std::optional<int> chooseNext() const;

  int next_;
  bool mayGrow_;
  int fitting_ = 0;          // the largest zoom at which the page fits; 0: unknown
  int tooLarge_ = kMax + 1;  // the smallest zoom at which it does not
  int guess_ = 0;            // the zoom at which it fits if its height does not depend on the width
  int misses_ = 0;
};
