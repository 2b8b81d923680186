#include "app/gtk/page/PageFit.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/gtk/page/Settings.h"

namespace {

constexpr double kMinZoom = 0.5;
constexpr double kMaxZoom = 3.0;
constexpr char kHandler[] = "changed";
constexpr char kSignal[] = "script-message-received::changed";

// Defines heightAt(present, shown), which returns the height of the main frame as a multiple of the height of its area
// at the present zoom, and settle(zoom, fits) for the end of a search. Reports changes of the page and of its area, but
// not those of the zoom. An area that changes during a search is reported, too: some of the heights were those in the
// area before. The largest height of all frames since the last report counts, and once at this zoom also if the page is
// lower again: otherwise a page that changes all the time would not settle. The page is looked at during a search, too:
// `known` and `seen` are heights at the shown zoom, never at one that is tried.
//
// A body of the area's height with margins, or with a header above it, is taller than its area at every zoom. So where
// an element is as tall as the area, its contents count instead of its own height.
constexpr char kScript[] = R"((() => {
  'use strict';
  const rate = 100, quiet = 400;  // milliseconds
  let zoom = 1, known = 1, seen = 1, tallest = 1, width = innerWidth, height = innerHeight;
  let changed = false, resized = false, check = 0, report = 0;

  const textBottom = (text) => {
    const range = document.createRange();
    range.selectNode(text);
    return range.getBoundingClientRect().bottom + scrollY;
  };
  const bottomOf = (node) => {
    if (node.nodeType === Node.TEXT_NODE) return { bottom: textBottom(node), follows: false };
    if (node.nodeType !== Node.ELEMENT_NODE) return { bottom: 0, follows: false };
    const style = getComputedStyle(node), box = node.getBoundingClientRect();
    if (style.position === 'fixed') return { bottom: 0, follows: false };
    const overflow = style.overflowY === 'visible' ? node.scrollHeight : 0;
    const bottom = box.top + scrollY + Math.max(box.height, overflow);
    if (box.height < innerHeight - 1) return { bottom, follows: false };
    const inner = [...node.childNodes].map(bottomOf);
    const follows = box.height <= innerHeight + 1 || inner.some((each) => each.follows);
    return { bottom: follows ? inner.reduce((most, each) => Math.max(most, each.bottom), 0) : bottom, follows };
  };
  const measure = () => {
    const root = document.documentElement, body = document.body;
    const scroller = document.scrollingElement ?? root;
    let total = scroller.scrollHeight;
    if (body && body !== scroller && /auto|scroll/.test(getComputedStyle(body).overflowY))
      total += body.scrollHeight - body.clientHeight;
    if (total <= innerHeight) return 1;
    const { bottom, follows } = bottomOf(root);
    return Math.max(follows ? Math.min(bottom, total) : total, innerHeight) / innerHeight;
  };

  const differs = (one, other) => Math.abs(one - other) > 3;
  const noteArea = () => {
    const area = [innerWidth * zoom, innerHeight * zoom];
    if (!differs(area[0], width) && !differs(area[1], height)) return;
    [width, height] = area;
    resized = true;
    schedule();
  };
  const send = () => webkit.messageHandlers.changed.postMessage(0);
  const look = () => {
    check = 0;
    const page = Math.max(measure(), tallest);
    tallest = 1;
    noteArea();
    if ((page > 1.002 && Math.abs(page - known) > 0.001) || resized) {
      seen = known = page;
      resized = false;
      send();
    } else if (changed && zoom < 1) {
      clearTimeout(report);
      report = setTimeout(send, quiet);
    }
    changed = false;
  };
  const schedule = () => { check ||= setTimeout(look, rate); };
  const noteChange = () => { changed = true; schedule(); };
  const noteSize = () => { tallest = Math.max(measure(), tallest); schedule(); };

  window.heightAt = (present, shown) => {
    zoom = present;
    noteArea();
    zoom = shown;
    if (present !== shown) return measure();
    known = Math.max(measure(), seen);
    seen = tallest = 1;
    return known;
  };
  window.settle = (level, fits) => {
    if (level !== zoom) seen = 1;
    zoom = level;
    tallest = 1;
    known = fits ? 1 : measure();
    noteArea();
  };
  for (const type of ['load', 'change', 'toggle', 'transitionend', 'animationend'])
    addEventListener(type, noteChange, true);
  for (const type of ['resize', 'input'])
    addEventListener(type, schedule, true);
  new MutationObserver(noteChange).observe(
      document, { subtree: true, childList: true, attributes: true, characterData: true });
  const sizes = new ResizeObserver(noteSize);
  for (const each of [document.documentElement, document.body, ...document.body?.children ?? []])
    if (each) sizes.observe(each);
  look();
})();)";

// Keeps the web process busy until it has received the next requests.
constexpr char kAwaitRequests[] = "for (const end = performance.now() + 3; performance.now() < end;);";

constexpr char kScrollToTop[] =
    "for (const each of [document.documentElement, document.body])"
    " each?.scrollTo({ top: 0, left: 0, behavior: 'instant' })";

// The user has zoomed: what they type must stay visible.
constexpr char kShowFocus[] =
    "if (document.activeElement !== document.body)"
    " document.activeElement?.scrollIntoViewIfNeeded()";

std::string fraction(int percent) {
  return std::to_string(percent) + " / 100";
}

}  // namespace

PageFit::PageFit(WebKitWebView* view, WebKitUserContentManager* content, std::function<void(bool)> onPartHidden)
    : view_(view), content_(content), onPartHidden_(std::move(onPartHidden)), measurements_(g_cancellable_new()) {
  g_signal_connect(view_, "size-allocate", G_CALLBACK(onSize), this);
}

PageFit::~PageFit() {
  stopSearch();
  g_signal_handlers_disconnect_by_data(content_, this);
}

void PageFit::start() {
  if (std::exchange(started_, true)) return;
  const Owned<WebKitUserScript, webkit_user_script_unref> script(
      webkit_user_script_new_for_world(kScript, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                       WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_END, kScriptWorld, nullptr, nullptr));
  webkit_user_content_manager_add_script(content_, script.get());
  webkit_user_content_manager_register_script_message_handler_in_world(content_, kHandler, kScriptWorld);
  g_signal_connect(content_, kSignal, G_CALLBACK(onChanged), this);
}

void PageFit::forbidScrolling() {
  if (!std::exchange(scrollingForbidden_, true)) updateScrolling();
}

// Every page begins at 100 %: its zoom does not depend on the page before.
void PageFit::committed() {
  stopSearch();
  setPartHidden(false);
  growths_.reset();
  fitting_ = FitSearch::kMax;
  if (userZoom_.value_or(1) > 1) return;
  if (std::exchange(userZoom_, std::nullopt)) updateScrolling();
  webkit_web_view_set_zoom_level(view_, 1);
}

void PageFit::zoomBy(double factor) {
  const double fitting = fitting_ / 100.0;
  const double level = std::clamp(webkit_web_view_get_zoom_level(view_) * factor, kMinZoom, kMaxZoom);
  if (std::abs(level - fitting) < 0.01) {
    if (userZoom_) resetZoom();
    return;
  }
  stopSearch();
  setPartHidden(false);
  userZoom_ = std::abs(level - 1) < 0.01 ? 1 : level;
  updateScrolling();
  webkit_web_view_set_zoom_level(view_, *userZoom_);
  run(kShowFocus);
}

void PageFit::resetZoom() {
  stopSearch();
  userZoom_.reset();
  growths_.reset();
  updateScrolling();
  webkit_web_view_set_zoom_level(view_, fitting_ / 100.0);
  run(kScrollToTop);
  fit();
}

// Measures the page, unless the user has chosen the zoom.
void PageFit::fit() {
  if (!started_ || userZoom_) return;
  if (search_) {
    searchAgain_ = true;
    return;
  }
  search_.emplace(fitting_, growths_.take());
  measureAt(fitting_);
}

// The web process handles the requests that it has received in their order, and paints only afterward.
void PageFit::measureAt(int percent) {
  if (percent != fitting_) run(kAwaitRequests);
  webkit_web_view_set_zoom_level(view_, percent / 100.0);
  run("heightAt(" + fraction(percent) + ", " + fraction(fitting_) + ")", onMeasured);
  webkit_web_view_set_zoom_level(view_, fitting_ / 100.0);
}

void PageFit::measured(double height) {
  if (const std::optional<int> next = search_->measured(height)) return measureAt(*next);
  fitting_ = search_->zoom();
  webkit_web_view_set_zoom_level(view_, fitting_ / 100.0);
  run("settle(" + fraction(fitting_) + (search_->fits() ? ", true)" : ", false)"));
  setPartHidden(!search_->fits());
  search_.reset();
  if (std::exchange(searchAgain_, false)) fit();
}

void PageFit::stopSearch() {
  search_.reset();
  searchAgain_ = false;
  g_cancellable_cancel(measurements_.get());
  measurements_.reset(g_cancellable_new());
}

void PageFit::setPartHidden(bool hidden) {
  if (std::exchange(partHidden_, hidden) != hidden) onPartHidden_(hidden);
}

void PageFit::updateScrolling() {
  webkit_user_content_manager_remove_all_style_sheets(content_);
  if (!scrollingForbidden_ || userZoom_) return;
  webkit_user_content_manager_add_style_sheet(content_, newStyleSheetWithoutScrolling().get());
}

void PageFit::run(const std::string& script, GAsyncReadyCallback done) {
  webkit_web_view_evaluate_javascript(view_, script.c_str(), -1, kScriptWorld, nullptr,
                                      done != nullptr ? measurements_.get() : nullptr, done, this);
}

void PageFit::onChanged(WebKitUserContentManager*, WebKitJavascriptResult*, PageFit* self) {
  self->fit();
}

void PageFit::onSize(GtkWidget*, GdkRectangle* size, PageFit* self) {
  if (size->width != self->size_.width || size->height != self->size_.height) self->growths_.reset();
  self->size_ = *size;
}

// `self` exists unless the search was stopped. A page in which the script has not run keeps its zoom.
void PageFit::onMeasured(GObject* view, GAsyncResult* result, gpointer self) {
  GError* failure = nullptr;
  const Owned<JSCValue> height(webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, &failure));
  const Owned<GError, g_error_free> error(failure);
  if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED)) return;
  auto* const fit = static_cast<PageFit*>(self);
  if (height && jsc_value_is_number(height.get())) return fit->measured(jsc_value_to_double(height.get()));
  fit->stopSearch();
}
