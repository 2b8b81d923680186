#include "tests/tools/hand/AutomatedInput.h"

#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>

#include "tests/tools/site/Pages.h"
#include "tests/tools/support/EventLoop.h"

namespace tools {
namespace {

using namespace std::chrono_literals;

constexpr auto kTimeout = 30s;
constexpr unsigned kSpinnerBlue = 0x008bd9;

void waitFor(const std::string& what, const std::function<bool()>& condition) {
  if (!waitUntil(condition, kTimeout)) throw std::runtime_error("timed out waiting for " + what);
}

}  // namespace

ScreenWindow AutomatedInput::window() {
  waitFor("the window", [this] { return !screen_.windows().empty(); });
  return screen_.windows().front();
}

Area AutomatedInput::find(unsigned color, const std::string& what) {
  std::optional<Area> seen;
  waitFor(what, [&] {
    const Area frame = window().frame;
    seen = screen_.picture(frame).find(color);
    if (seen) *seen = {frame.x + seen->x, frame.y + seen->y, seen->width, seen->height};
    return seen.has_value();
  });
  return *seen;
}

void AutomatedInput::takePicture(const std::string& name) {
  const std::string path = screenshotFolder_ + "/" + name + ".png";
  screen_.picture(window().frame).savePng(path);
  std::cout << "picture: " << path << std::endl;
}

void AutomatedInput::click(const Area& area) {
  screen_.click(area.x + area.width / 2, area.y + area.height / 2);
}

void AutomatedInput::fillInTheForm(const Area& button) {
  // Without a window manager the keys go to the window under the pointer.
  screen_.moveTo(button.x, button.y);
  screen_.type("ada");
  screen_.press(XK_Tab);
  screen_.type("Correct-Horse-7");
  // A click may be handled before earlier keys: wait until the page shows the last key.
  screen_.press(XK_Tab);
  find(kFocusRing, "the focus on the button");
}

void AutomatedInput::waitForSpinner() {
  waitFor("the request for the sign-in page", [this] { return !site_.server().requests().empty(); });
  find(kSpinnerBlue, "the spinner");
  takePicture("spinner");
  site_.server().release("/signin");
}

void AutomatedInput::signIn() {
  const Area button = find(kSignInButton, "the sign-in page");
  fillInTheForm(button);
  takePicture("sign-in");
  click(button);
}

void AutomatedInput::signInWithTheOrganization() {
  click(find(kOrganizationLink, "the link to the organization"));
  const Area button = find(kEnterpriseButton, "the enterprise page");
  fillInTheForm(button);
  takePicture("enterprise");
  click(button);
}

void AutomatedInput::closeTheWindow() {
  find(kSignInButton, "the sign-in page");
  screen_.close(window().id);
}

}  // namespace tools
