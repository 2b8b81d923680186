#include "app/gtk/LoadTracker.h"

#include <utility>

#include "app/gtk/LoadErrors.h"

namespace {

constexpr char kBlankPage[] = "about:blank";
constexpr char kCocoaDomain[] = "NSURLErrorDomain";
constexpr char kPolicyDomain[] = "WebKitPolicyError";

std::optional<std::string> known(const std::string& address) {
  if (address.empty()) return std::nullopt;
  return address;
}

}  // namespace

void LoadTracker::loadRequested(const std::string& address) {
  if (state_ != State::kIdle) return;
  beginLoad(address);
}

// A page that navigates itself starts under its old address; what was asked for last is where it goes.
void LoadTracker::loadStarted(const std::string& address) {
  tellHeldFinish();
  asked_.clear();
  beginLoad(lastAsked_.empty() ? address : lastAsked_);
}

void LoadTracker::loadRedirected(const std::string& address) {
  address_ = address;
  forgetAsked(address);
  keepTime();
}

void LoadTracker::loadCommitted(const std::string& address) {
  if (address == kBlankPage && address_ != kBlankPage) {
    return failMainFrame(true, address_, kLoadRestrictedPort, kPolicyDomain);
  }
  awaited_.reset();
  address_ = address;
  state_ = State::kCommitted;
  keepTime();
}

void LoadTracker::loadFinished(const std::string& address) {
  if (state_ != State::kCommitted) return;
  if (subFrames_.empty()) return finishMainFrame(address);
  state_ = State::kIdle;
  heldFinish_ = address;
}

void LoadTracker::loadFailed(bool provisional, const std::string& address, const LoadError& error) {
  failMainFrame(provisional, address, cocoaErrorCode(error, address), error.domain);
}

void LoadTracker::navigationAsked(const std::string& address) {
  lastAsked_ = address;
  asked_.insert(address);
}

void LoadTracker::resourceStarted(unsigned id, const std::string& address, bool isMain) {
  if (isMain) {
    mainResource_ = id;
    return;
  }
  const auto asked = asked_.find(address);
  if (asked == asked_.end()) return;
  asked_.erase(asked);
  subFrames_[id] = {address};
  keepTime();
}

void LoadTracker::resourceRedirected(unsigned id, const std::string& address) {
  const auto subFrame = subFrames_.find(id);
  if (subFrame == subFrames_.end()) return;
  subFrame->second.address = address;
  forgetAsked(address);
  keepTime();
}

void LoadTracker::resourceAnswered(unsigned id) {
  const auto subFrame = subFrames_.find(id);
  if (subFrame != subFrames_.end()) subFrame->second.answered = true;
  if (subFrame != subFrames_.end() || id == mainResource_) keepTime();
}

void LoadTracker::resourceFinished(unsigned id) {
  if (id == mainResource_) documentComplete_ = true;
  if (subFrames_.count(id) == 0) return;
  dropSubFrame(id);
}

void LoadTracker::resourceFailed(unsigned id, const std::string& address, const LoadError& error) {
  if (subFrames_.count(id) != 0) failSubFrame(id, cocoaErrorCode(error, address), error.domain);
}

void LoadTracker::downloadStarted(const std::string& address) {
  forgetAsked(address);
}

void LoadTracker::personAsked() {
  ++questions_;
  keepTime();
}

void LoadTracker::personAnswered() {
  --questions_;
  keepTime();
}

void LoadTracker::progressed() {
  keepTime();
}

void LoadTracker::pageProcessEnded() {
  failMainFrame(state_ == State::kProvisional, address_, kLoadUnknownError, kCocoaDomain);
}

void LoadTracker::awaitPage(const std::string& address) {
  awaited_ = address;
  keepTime();
}

void LoadTracker::dataTimedOut() {
  if (state_ != State::kIdle && !documentComplete_) {
    return failMainFrame(state_ == State::kProvisional, address_, kLoadTimedOut, kCocoaDomain);
  }
  if (!subFrames_.empty()) return failSubFrame(subFrames_.begin()->first, kLoadTimedOut, kCocoaDomain);
  if (state_ == State::kCommitted) return finishMainFrame(address_);
  if (awaited_) failMainFrame(true, *std::exchange(awaited_, std::nullopt), kLoadTimedOut, kCocoaDomain);
}

void LoadTracker::keepTime() {
  if (isWaiting() && questions_ == 0) {
    clock_.wind();
  } else {
    clock_.stop();
  }
}

void LoadTracker::beginLoad(const std::string& address) {
  state_ = State::kProvisional;
  address_ = address;
  mainResource_ = 0;
  documentComplete_ = false;
  keepTime();
}

void LoadTracker::forgetAsked(const std::string& address) {
  const auto asked = asked_.find(address);
  if (asked != asked_.end()) asked_.erase(asked);
}

void LoadTracker::dropSubFrame(unsigned id) {
  subFrames_.erase(id);
  keepTime();
  if (subFrames_.empty()) tellHeldFinish();
}

void LoadTracker::tellHeldFinish() {
  if (!heldFinish_) return;
  const std::string address = *std::exchange(heldFinish_, std::nullopt);
  outcomes_.mainFrameFinished(known(address));
}

void LoadTracker::finishMainFrame(const std::string& address) {
  state_ = State::kIdle;
  keepTime();
  outcomes_.mainFrameFinished(known(address));
}

void LoadTracker::failMainFrame(bool provisional, const std::string& address, int code, const std::string& domain) {
  tellHeldFinish();
  state_ = State::kIdle;
  keepTime();
  outcomes_.loadFailed({known(address), code, domainNumber(domain), provisional});
}

void LoadTracker::failSubFrame(unsigned id, int code, const std::string& domain) {
  // An answer that the policy refuses is never committed.
  const SubFrame subFrame = subFrames_[id];
  const bool provisional = !subFrame.answered || domain == kPolicyDomain;
  outcomes_.loadFailed({known(subFrame.address), code, domainNumber(domain), provisional});
  dropSubFrame(id);
}
