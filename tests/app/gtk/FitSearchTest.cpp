#include "app/gtk/page/FitSearch.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;
using testing::SizeIs;

constexpr double kArea = 550;

// Returns the height of a page in device pixels at a zoom between 0.5 and 1.
using Page = std::function<double(double)>;

Page ofHeight(double height) {
  return [height](double zoom) { return height * zoom; };
}

// Text that fills the width: at half the zoom it has half the lines, each half as high.
Page ofText(double height) {
  return [height](double zoom) { return height * zoom * zoom; };
}

struct Search {
  std::vector<int> measuredAt;
  int zoom = 0;
  bool fits = false;
};

Search searchFor(const Page& page, int shown = 100, bool mayGrow = false) {
  Search done;
  FitSearch search(shown, mayGrow);
  for (std::optional<int> next = shown; next;) {
    done.measuredAt.push_back(*next);
    if (done.measuredAt.size() > 100) break;
    next = search.measured(std::max(page(*next / 100.0) / kArea, 1.0));
  }
  done.zoom = search.zoom();
  done.fits = search.fits();
  return done;
}

TEST(FitSearchTest, AShortPageIsMeasuredOnce) {
  const Search done = searchFor(ofHeight(300));
  EXPECT_THAT(done.measuredAt, ElementsAre(100));
  EXPECT_EQ(done.zoom, 100);
  EXPECT_TRUE(done.fits);
}

TEST(FitSearchTest, ATallPageGetsTheZoomAtWhichItFits) {
  for (const int height : {560, 600, 733, 900, 1099}) {
    const Search done = searchFor(ofHeight(height), 100, true);
    EXPECT_EQ(done.zoom, static_cast<int>(100 * kArea / height)) << height;
    EXPECT_THAT(done.measuredAt, SizeIs(Le(3u))) << height;
    EXPECT_TRUE(done.fits);
  }
}

TEST(FitSearchTest, TextThatWrapsStaysAsLargeAsPossible) {
  const Search done = searchFor(ofText(1100), 100, true);  // it fits at 70.7 %
  EXPECT_EQ(done.zoom, 70);
  EXPECT_TRUE(done.fits);
}

TEST(FitSearchTest, APageOfTwiceItsAreaFits) {
  const Search done = searchFor(ofHeight(1100));
  EXPECT_EQ(done.zoom, 50);
  EXPECT_TRUE(done.fits);
}

TEST(FitSearchTest, ATallerPageGetsTheSmallestZoom) {
  const Search done = searchFor(ofHeight(1200));
  EXPECT_EQ(done.zoom, 50);
  EXPECT_FALSE(done.fits);
}

TEST(FitSearchTest, OnePixelTooManyDoesNotCount) {
  EXPECT_EQ(searchFor(ofHeight(551)).zoom, 100);
  EXPECT_EQ(searchFor(ofHeight(552)).zoom, 99);
}

TEST(FitSearchTest, APageAsTallAsItsAreaStays) {
  EXPECT_EQ(searchFor([](double) { return kArea; }).zoom, 100);
}

TEST(FitSearchTest, APageThatFollowsItsAreaSettles) {
  const Search done = searchFor([](double zoom) { return kArea + 50 * zoom; });
  EXPECT_EQ(done.zoom, 50);
  EXPECT_FALSE(done.fits);
  EXPECT_THAT(done.measuredAt, SizeIs(Le(6u)));
}

TEST(FitSearchTest, AShrunkPageKeepsItsZoomUnlessItMayGrow) {
  EXPECT_EQ(searchFor(ofHeight(300), 61, false).zoom, 61);
  EXPECT_THAT(searchFor(ofHeight(300), 61, true).measuredAt, ElementsAre(61, 100));
  EXPECT_EQ(searchFor(ofHeight(700), 61, true).zoom, 78);
}

TEST(FitSearchTest, APageThatMayNotGrowGetsTheFirstZoomAtWhichItFits) {
  EXPECT_THAT(searchFor(ofText(1100), 100, false).measuredAt, ElementsAre(100, 50));
}

TEST(FitSearchTest, AnUnchangedPageKeepsItsZoom) {
  for (const int height : {560, 733, 900, 1099}) {
    const int zoom = searchFor(ofHeight(height)).zoom;
    EXPECT_EQ(searchFor(ofHeight(height), zoom, true).zoom, zoom) << height;
  }
}

TEST(FitSearchTest, TheResultDoesNotDependOnTheZoomBefore) {
  for (int shown = 50; shown <= 100; ++shown) {
    EXPECT_EQ(searchFor(ofHeight(687.5), shown, true).zoom, 80) << shown;
    EXPECT_EQ(searchFor(ofText(1100), shown, true).zoom, 70) << shown;
  }
}

TEST(FitSearchTest, AGrownPageGetsASmallerZoom) {
  EXPECT_EQ(searchFor(ofHeight(900), 78, true).zoom, 61);
}

TEST(FitSearchTest, HeightsThatAreNoNumbersFit) {
  EXPECT_EQ(searchFor([](double) { return std::nan(""); }).zoom, 100);
}

TEST(FitSearchTest, AnInfiniteHeightGetsTheSmallestZoom) {
  const Search done = searchFor([](double) { return std::numeric_limits<double>::infinity(); });
  EXPECT_EQ(done.zoom, 50);
  EXPECT_FALSE(done.fits);
}

// A hostile page may have any height at any time.
TEST(FitSearchTest, EndsForEveryPage) {
  std::mt19937 random(1);
  for (int run = 0; run < 20000; ++run) {
    const Search done = searchFor([&](double) { return kArea * (0.9 + std::pow(2, random() % 40) / 1000); },
                                  50 + static_cast<int>(random() % 51), random() % 2 == 0);
    ASSERT_THAT(done.measuredAt, SizeIs(Le(12u)));
    ASSERT_THAT(done.zoom, AllOf(Ge(50), Le(100)));
    for (const int zoom : done.measuredAt)
      ASSERT_THAT(zoom, AllOf(Ge(50), Le(100)));
  }
}

}  // namespace
