// What every test of the real window has: a home, a screen, a site and a pipe of its own.
//
// A test scripts the site, starts the program and looks at what came out:
//
//   site.serve("/signin", redirectTo(site.address("/done?code=1")));
//   EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1")));

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tests/endtoend/Home.h"
#include "tests/endtoend/MessagePipe.h"
#include "tests/endtoend/SignInRun.h"
#include "tests/endtoend/WatchedFolder.h"
#include "tests/tools/hand/Screen.h"
#include "tests/tools/hand/VirtualDisplay.h"
#include "tests/tools/site/LoopbackServer.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {

using tools::Area;
using tools::KeySymbol;
using tools::LoopbackServer;
using tools::page;
using tools::Picture;
using tools::redirectTo;
using tools::Request;
using tools::Screen;
using tools::ScreenWindow;

inline const std::string kWindowClosed = "<errorNo><error>1</error></errorNo>";
inline const std::string kLoadFailed = "<errorNo><error>2</error></errorNo>";
inline const std::string kOptionsMissing = "<errorNo><error>255</error></errorNo>";

//   result("http://h/?a&amp;b")  => "<result><URL>http://h/?a&amp;b</URL></result>"
std::string result(const std::string& escapedAddress);

// A page that, once it has loaded, goes to an address.
tools::Answer pageThatGoesTo(const std::string& address);

// A page that goes to an address when it is clicked, and asks the site for "/clickable" once that works.
tools::Answer pageThatWaitsForAClick(const std::string& address);

// A page that asks the site for "/loaded" once it has loaded. `body` stands on it.
tools::Answer pageThatTells(const std::string& body = "");

class EndToEndTest : public testing::Test {
 protected:
  // The site has an ordinary page at "/signin", "/done" and "/start"; the options name them. No option is missing.
  explicit EndToEndTest(const tools::ScreenSize& screenSize = {});
  ~EndToEndTest() override;

  void start();

  // Waits for a condition that an event makes true, at most kPatience, and fails the test otherwise.
  void until(const std::string& what, const std::function<bool()>& condition);
  void untilAsked(const std::string& target);  // by GET
  void untilLogSays(const std::string& message);

  // Waits for the end of the run, which must be a clean one, and gives what it wrote into the pipe.
  std::string message();

  // start(), then message().
  std::string messageOfARun();

  // Closes the window as a user does and waits for the answer: kWindowClosed, unless the run had ended before.
  std::string messageAfterClosing();

  ScreenWindow window();
  void click();  // into the middle of the window

  // A new folder or file of this test's, gone with its home.
  std::filesystem::path temporary(const std::string& name) const { return folder_ / name; }

 private:
  std::string account();  // what has happened so far, for whoever reads of a failure

  std::filesystem::path folder_;
  WatchedFolder logs_;

 protected:
  tools::VirtualDisplay display;
  Screen screen;
  LoopbackServer site;
  MessagePipe pipe;
  Options options;
  std::unique_ptr<SignInRun> run;
};

}  // namespace endtoend
