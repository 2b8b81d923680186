#include "bench/window/BenchSite.h"

#include <chrono>

#include "tests/tools/site/Pages.h"

namespace bench {
namespace {

constexpr char kPicture[] = R"(<svg xmlns="http://www.w3.org/2000/svg" width="96" height="96" viewBox="0 0 96 96">
<circle cx="48" cy="48" r="44" fill="#32245a"/><path d="M28 52l14 14 28-34" fill="none" stroke="#fff" stroke-width="9"/>
</svg>)";

// The second animation frame starts after the first one, which has painted the loaded page.
constexpr char kPictureAndBeacon[] = R"(<img src="/picture" alt=""><script>
addEventListener("load", () =>
  requestAnimationFrame(() => requestAnimationFrame(() => navigator.sendBeacon("/shown"))));
</script>)";

}  // namespace

BenchSite::BenchSite() {
  server_.serve("/redirecting", tools::redirectTo(redirectAddress() + "?code=4711"));
  server_.serve("/done", tools::page(tools::notePage("Signed in", "You may close this window.")));
  server_.serve("/signin", tools::page(tools::signInPage("7f3a", enterpriseAddress()) + kPictureAndBeacon));
  server_.serve("/picture", tools::Response{200, kPicture, {{"Content-Type", "image/svg+xml"}}});
  server_.serve("/failing", [this](const tools::Request&) {
    failedAt_ = std::chrono::steady_clock::now();
    return tools::redirectTo(closedPort_.address());
  });
  server_.serve("/shown", [this](const tools::Request&) {
    ++shown_;
    return tools::Response{204, "", {}};
  });
}

}  // namespace bench
