// Automated input: signs in or closes the window, and takes screenshots.

#pragma once

#include <string>
#include <utility>

#include "tests/tools/hand/Screen.h"
#include "tests/tools/site/SignInSite.h"

namespace tools {

// Each step waits until the screen shows what it needs, and throws std::runtime_error after a timeout.
class AutomatedInput {
 public:
  // Screenshots are saved in `screenshotFolder`.
  AutomatedInput(SignInSite& site, const std::string& display, std::string screenshotFolder)
      : site_(site), screen_(display), screenshotFolder_(std::move(screenshotFolder)) {}

  // Waits for the spinner, then releases "/signin", which the site must hold.
  void waitForSpinner();

  void signIn();
  void signInWithTheOrganization();
  void closeTheWindow();

 private:
  ScreenWindow window();
  Area find(unsigned color, const std::string& what);
  void takePicture(const std::string& name);
  void fillInTheForm(const Area& button);
  void click(const Area& area);

  SignInSite& site_;
  Screen screen_;
  std::string screenshotFolder_;
};

}  // namespace tools
