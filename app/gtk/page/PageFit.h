// The zoom of the page: the one at which the whole main frame fits into the page's area, or the user's own.
//
// - The fitting zoom is the largest one between 100 % and 50 % (FitSearch). A page that is still too tall at 50 % stays
//   there, and `onPartHidden` is called.
// - The page is measured when its document is complete, after its images, when its contents change and when its area
//   has another size. A script in a world of its own observes that and returns the height; pages cannot reach it.
// - The page reports at most ten times per second, and not at all while nothing changes or while it fits at 100 %.
// - Zooms are tried between two frames, so that only the last one is painted.
// - A page becomes smaller at once, but larger only after 0.4 seconds without a change. After six measurements larger
//   zooms are not tried until the user clicks, presses Return or Space, or resizes the window. So every page settles,
//   also one that changes forever.
// - At the fitting zoom the main frame cannot be scrolled, at the user's it can. The user's zoom ends with the page,
//   unless it is above 100 %: then the following pages have it too.
//
// Main thread.

#pragma once

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <functional>
#include <optional>
#include <string>

#include "app/gtk/Glib.h"
#include "app/gtk/page/FitSearch.h"
#include "app/gtk/page/RequestLimit.h"

class PageFit {
 public:
  // `view` loads with `content`. Both must outlive this object.
  PageFit(WebKitWebView* view, WebKitUserContentManager* content, std::function<void(bool)> onPartHidden);
  ~PageFit();

  PageFit(const PageFit&) = delete;
  PageFit& operator=(const PageFit&) = delete;

  // Fits every page that is loaded from now on.
  void start();

  // Stops the main frame of every page from scrolling, except at the user's zoom.
  void forbidScrolling();

  // A page has been committed.
  void committed();

  // The user has clicked, or pressed Return or Space.
  void userActed() { growths_.reset(); }

  // Multiplies the zoom, within 50 % to 300 %.
  void zoomBy(double factor);

  // Returns to the fitting zoom and to the top of the page.
  void resetZoom();

 private:
  static void onChanged(WebKitUserContentManager*, WebKitJavascriptResult*, PageFit* self);
  static void onSize(GtkWidget*, GdkRectangle* size, PageFit* self);
  static void onMeasured(GObject* view, GAsyncResult* result, gpointer self);

  void fit();
  void measureAt(int percent);
  void measured(double height);
  void stopSearch();
  void setPartHidden(bool hidden);
  void updateScrolling();
  void run(const std::string& script, GAsyncReadyCallback done = nullptr);

  WebKitWebView* view_;
  WebKitUserContentManager* content_;
  std::function<void(bool)> onPartHidden_;
  Owned<GCancellable> measurements_;  // of the present search
  std::optional<FitSearch> search_;
  bool searchAgain_ = false;
  RequestLimit growths_{6};
  int fitting_ = FitSearch::kMax;   // in percent
  std::optional<double> userZoom_;  // instead of it
  bool partHidden_ = false;
  bool started_ = false;
  bool scrollingForbidden_ = false;
  GdkRectangle size_{};
};
