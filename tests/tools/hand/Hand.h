// An automated hand before a screen: it signs in, or closes the window, and takes pictures on the way.

#pragma once

#include <string>
#include <utility>

#include "tests/tools/hand/Screen.h"
#include "tests/tools/site/SignInSite.h"

namespace tools {

// Every step waits for what a person would wait for and throws std::runtime_error when it does not come.
class Hand {
 public:
  // Pictures go into the folder `album`.
  Hand(SignInSite& site, const std::string& display, std::string album)
      : site_(site), screen_(display), album_(std::move(album)) {}

  // The spinner shows until the site answers: the site has to hold "/signin" back, and is told to go on here.
  void watchTheSpinner();

  void signIn();
  void signInWithTheOrganisation();
  void closeTheWindow();

 private:
  ScreenWindow theWindow();
  Area look(unsigned colour, const std::string& what);
  void takePicture(const std::string& name);
  void fillInTheForm(const Area& button);
  void click(const Area& area);

  SignInSite& site_;
  Screen screen_;
  std::string album_;
};

}  // namespace tools
