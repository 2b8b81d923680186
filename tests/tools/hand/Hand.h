// Automated input: signs in or closes the window, and takes screenshots.

#pragma once

#include <string>
#include <utility>

#include "tests/tools/hand/Screen.h"
#include "tests/tools/site/SignInSite.h"

namespace tools {

// Each step waits until the screen shows what it needs, and throws std::runtime_error after a timeout.
class Hand {
 public:
  // Screenshots are saved in the folder `album`.
  Hand(SignInSite& site, const std::string& display, std::string album)
      : site_(site), screen_(display), album_(std::move(album)) {}

  // Waits for the spinner, then releases "/signin", which the site must hold.
  void watchTheSpinner();

  void signIn();
  void signInWithTheOrganization();
  void closeTheWindow();

 private:
  ScreenWindow theWindow();
  Area look(unsigned color, const std::string& what);
  void takePicture(const std::string& name);
  void fillInTheForm(const Area& button);
  void click(const Area& area);

  SignInSite& site_;
  Screen screen_;
  std::string album_;
};

}  // namespace tools
