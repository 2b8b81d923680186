#include "app/gtk/load/LoadTracker.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "app/gtk/load/CocoaErrors.h"

namespace {

using Kind = LoadEvent::Kind;

constexpr char kBlankPage[] = "about:blank";
constexpr char kCocoaDomain[] = "NSURLErrorDomain";
constexpr char kPolicyDomain[] = "WebKitPolicyError";
constexpr std::size_t kMaxNavigations = 1000;

std::optional<std::string> nonEmpty(const std::string& address) {
  if (address.empty()) return std::nullopt;
  return address;
}

}  // namespace

void LoadTracker::handle(const LoadEvent& event) {
  switch (event.kind) {
    case Kind::kRequested:
      if (state_ == State::kIdle) beginLoad(event.address);
      return;
    case Kind::kStarted:
      return started(event.address);
    case Kind::kRedirected:
      address_ = event.address;
      (void)removeNavigation(event.address);
      return updateTimer();
    case Kind::kCommitted:
      return committed(event.address);
    case Kind::kFinished:
      return finished(event.address);
    case Kind::kProvisionalFailed:
    case Kind::kFailed:
      return failMainFrame(event.kind == Kind::kProvisionalFailed, event.address,
                           cocoaErrorCode(event.error, event.address), event.error.domain);
    case Kind::kNavigation:
      return addNavigation(event.address);
    case Kind::kMainResourceStarted:
      mainResource_ = event.resource;
      return;
    case Kind::kResourceStarted:
      return resourceStarted(event.resource, event.address);
    case Kind::kResourceRedirected:
      return resourceRedirected(event.resource, event.address);
    case Kind::kResourceResponse:
      return resourceResponded(event.resource);
    case Kind::kResourceFinished:
      return resourceFinished(event.resource);
    case Kind::kResourceFailed:
      if (subFrames_.count(event.resource) == 0) return;
      return failSubFrame(event.resource, cocoaErrorCode(event.error, event.address), event.error.domain);
    case Kind::kDownloadStarted:
      (void)removeNavigation(event.address);
      return;
    case Kind::kPromptShown:
      ++openPrompts_;
      return updateTimer();
    case Kind::kPromptClosed:
      --openPrompts_;
      return updateTimer();
    case Kind::kProgress:
      return updateTimer();
    case Kind::kProcessEnded:
      return failMainFrame(state_ == State::kProvisional, address_, kLoadUnknownError, kCocoaDomain);
  }
}

// A page that navigates itself starts under its old address. The last navigation has the new one.
void LoadTracker::started(const std::string& address) {
  reportPendingFinish();
  navigations_.clear();
  beginLoad(lastNavigation_.empty() ? address : lastNavigation_);
}

void LoadTracker::committed(const std::string& address) {
  if (address == kBlankPage && address_ != kBlankPage) {
    return failMainFrame(true, address_, kLoadRestrictedPort, kPolicyDomain);
  }
  awaitedPage_.reset();
  address_ = address;
  state_ = State::kCommitted;
  updateTimer();
}

void LoadTracker::finished(const std::string& address) {
  if (state_ != State::kCommitted) return;
  if (subFrames_.empty()) return finishMainFrame(address);
  state_ = State::kIdle;
  pendingFinish_ = address;
}

// A resource whose address was navigated to before is the document of a sub-frame.
void LoadTracker::resourceStarted(unsigned id, const std::string& address) {
  if (!removeNavigation(address)) return;
  subFrames_[id] = {address};
  updateTimer();
}

void LoadTracker::resourceRedirected(unsigned id, const std::string& address) {
  const auto subFrame = subFrames_.find(id);
  if (subFrame == subFrames_.end()) return;
  subFrame->second.address = address;
  (void)removeNavigation(address);
  updateTimer();
}

void LoadTracker::resourceResponded(unsigned id) {
  const auto subFrame = subFrames_.find(id);
  if (subFrame != subFrames_.end()) subFrame->second.hasResponse = true;
  if (subFrame != subFrames_.end() || id == mainResource_) updateTimer();
}

void LoadTracker::resourceFinished(unsigned id) {
  if (id == mainResource_) documentComplete_ = true;
  if (subFrames_.count(id) != 0) removeSubFrame(id);
}

void LoadTracker::awaitPage(const std::string& address) {
  awaitedPage_ = address;
  updateTimer();
}

void LoadTracker::timedOut() {
  if (state_ != State::kIdle && !documentComplete_) {
    return failMainFrame(state_ == State::kProvisional, address_, kLoadTimedOut, kCocoaDomain);
  }
  if (!subFrames_.empty()) return failSubFrame(subFrames_.begin()->first, kLoadTimedOut, kCocoaDomain);
  if (state_ == State::kCommitted) return finishMainFrame(address_);
  if (awaitedPage_) failMainFrame(true, *std::exchange(awaitedPage_, std::nullopt), kLoadTimedOut, kCocoaDomain);
}

void LoadTracker::updateTimer() {
  if (isWaiting() && openPrompts_ == 0) {
    timer_.start();
  } else {
    timer_.cancel();
  }
}

void LoadTracker::beginLoad(const std::string& address) {
  state_ = State::kProvisional;
  address_ = address;
  mainResource_ = 0;
  documentComplete_ = false;
  updateTimer();
}

// Addresses may be megabytes long.
void LoadTracker::addNavigation(const std::string& address) {
  lastNavigation_ = address;
  navigations_.push_back(std::hash<std::string>()(address));
  if (navigations_.size() > kMaxNavigations) navigations_.pop_front();
}

bool LoadTracker::removeNavigation(const std::string& address) {
  const auto navigation = std::find(navigations_.begin(), navigations_.end(), std::hash<std::string>()(address));
  if (navigation == navigations_.end()) return false;
  navigations_.erase(navigation);
  return true;
}

void LoadTracker::removeSubFrame(unsigned id) {
  subFrames_.erase(id);
  updateTimer();
  if (subFrames_.empty()) reportPendingFinish();
}

void LoadTracker::reportPendingFinish() {
  if (!pendingFinish_) return;
  const std::string address = *std::exchange(pendingFinish_, std::nullopt);
  outcomes_.mainFrameFinished(nonEmpty(address));
}

void LoadTracker::finishMainFrame(const std::string& address) {
  state_ = State::kIdle;
  updateTimer();
  outcomes_.mainFrameFinished(nonEmpty(address));
}

void LoadTracker::failMainFrame(bool provisional, const std::string& address, int code, const std::string& domain) {
  reportPendingFinish();
  state_ = State::kIdle;
  updateTimer();
  outcomes_.loadFailed({nonEmpty(address), code, domainNumber(domain), provisional});
}

void LoadTracker::failSubFrame(unsigned id, int code, const std::string& domain) {
  // WebKit reports a policy error after the response, but the document is never committed.
  const SubFrame subFrame = subFrames_[id];
  const bool provisional = !subFrame.hasResponse || domain == kPolicyDomain;
  outcomes_.loadFailed({nonEmpty(subFrame.address), code, domainNumber(domain), provisional});
  removeSubFrame(id);
}
