#include "app/SignInFlow.h"

#include <string_view>
#include <utility>

#include "app/AbnormalEnd.h"
#include "app/Address.h"
#include "app/CommandLine.h"
#include "app/SpinnerPage.h"
#include "applog/Logger.h"

namespace {

constexpr int kCancelled = -999;
constexpr int kConnectionLost = -1005;

bool beginsWith(const std::string& address, const std::string& prefix) {
  return address.rfind(prefix, 0) == 0;
}

Frame resized(Frame frame, double width, double height) {
  frame.width = width;
  frame.height = height;
  return frame;
}

std::string loggable(const std::string& address) {
  const CommandLine& options = *CommandLine::GetInstance();
  return loggableAddress(address, {options.redirect_url, options.redirect_type3_url});
}

void logFailure(const LoadFailure& failure) {
  Logger* const log = Logger::getInstance();
  const std::string address = loggable(failure.address.value_or(""));
  if (failure.provisional) {
    if (failure.address) log->logInfo("SVO", "didFailProvisionalLoadWithError for URL %s", address.c_str());
    log->logInfo("SVO", "didFailProvisionalLoadWithError Error code %d", failure.code);
    log->logInfo("SVO", "didFailProvisionalLoadWithError Error domain %d", failure.domain);
    return;
  }
  if (failure.address) log->logInfo("SVO", "didFailLoadWithError for URL %s", address.c_str());
  log->logInfo("SVO", "didFailLoadWithError Error code %d", failure.code);
  log->logInfo("SVO", "didFailLoadWithError Error domain %d", failure.domain);
}

}  // namespace

void SignInFlow::launch(const std::string& bundlePath) {
  setResizingDone(false);

  const Frame windowFrame = window_.windowFrame();
  const Frame webViewFrame = window_.webViewFrame();
  window_.setWindowFrame(resized(windowFrame, 680, 570));
  window_.setWebViewFrame(resized(webViewFrame, 680, 550));

  const std::string path = spinnerPagePath(bundlePath);
  spinnerHTMLBaseURL = spinnerPageURL(path);
  window_.loadHTML(spinnerHTMLSource, path);

  const std::string title = CommandLine::GetInstance()->app_name;
  if (!title.empty()) window_.setTitle(title);
}

void SignInFlow::mainFrameFinished(const std::optional<std::string>& address) {
  if (ended_) return;
  window_.forbidMainFrameScrolling();
  if (!address) return;
  if (*address == spinnerHTMLBaseURL) return startSignIn();

  // A page whose address begins with both is an enterprise page, never a result.
  const CommandLine& options = *CommandLine::GetInstance();
  if (beginsWith(*address, options.redirect_type3_url)) return followEnterprisePage(*address);
  if (beginsWith(*address, options.redirect_url)) endRun(kSignedIn, *address);
}

void SignInFlow::loadFailed(const LoadFailure& failure) {
  if (ended_) return;
  logFailure(failure);
  if (failure.code == kCancelled || failure.code == kConnectionLost) return;
  endRun(kLoadFailed);
}

void SignInFlow::lastWindowClosed() {
  report(kWindowClosed);
}

void SignInFlow::newWindowRequested(const std::string& address) {
  if (ended_) return;
  window_.openInBrowser(address);
}

bool SignInFlow::linkClicked(const std::string& address) {
  if (!isContactAddress(address)) return false;
  newWindowRequested(address);
  return true;
}

void SignInFlow::startSignIn() {
  const CommandLine& options = *CommandLine::GetInstance();
  if (options.zel_url.empty() || options.redirect_type3_url.empty() || options.redirect_url.empty()) {
    return endRun(kOptionsMissing);
  }
  window_.loadAddress(options.zel_url);
}

void SignInFlow::followEnterprisePage(const std::string& address) {
  if (!resizingDone_) applyEnterpriseLayout();

  const std::string next = ExtracyEnterpriseURL(address);
  if (next.empty()) return;
  if (mayFollow(next, address)) return window_.loadAddress(next);
  Logger::getInstance()->logWarn("SVO",
                                 "The redirect_uri of the enterprise page is not followed: its scheme is refused");
}

void SignInFlow::applyEnterpriseLayout() {
  const std::string title = CommandLine::GetInstance()->type3_window_title;
  if (!title.empty()) window_.setTitle(title);

  const Frame webViewFrame = window_.webViewFrame();
  const Frame windowFrame = window_.windowFrame();
  window_.setWebViewFrame(resized(webViewFrame, 800, 600));

  // 600 is the height of the web view: the 20 points above it extend the window upward.
  const double y = windowFrame.y + windowFrame.height - 600;
  window_.setWindowFrame({windowFrame.x, y, 800, 620});
  setResizingDone(true);

  window_.setMinimumSize(800, 620);
  window_.enableZoomButton();
  window_.makeResizable();
}

// A message that cannot be written changes nothing: the launcher then reads an empty pipe.
bool SignInFlow::report(ResultCode code, std::string address) {
  if (ended_) return false;
  ended_ = true;
  if (claimMessage()) (void)WriteFIFO(CommandLine::GetInstance()->pipe_name, ConstructOutputString(code, address));
  return true;
}

void SignInFlow::endRun(ResultCode code, std::string address) {
  if (report(code, std::move(address))) window_.terminate();
}

std::string ExtracyEnterpriseURL(const std::string& url) {
  constexpr std::string_view kKey = "redirect_uri";
  const std::string::size_type at = url.find(kKey);
  if (at == std::string::npos || at + kKey.size() + 2 >= url.size()) return {};
  return url.substr(at + kKey.size() + 1);
}
