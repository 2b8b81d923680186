// The fixture of every test of the real window. Each test has a home, a screen, a site and a pipe of its own.
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

constexpr int kStripHeight = 20;

inline const std::string kWindowClosed = "<errorNo><error>1</error></errorNo>";
inline const std::string kLoadFailed = "<errorNo><error>2</error></errorNo>";
inline const std::string kOptionsMissing = "<errorNo><error>255</error></errorNo>";

//   result("http://h/?a&amp;b")  => "<result><URL>http://h/?a&amp;b</URL></result>"
std::string result(const std::string& escapedAddress);

// A page that navigates to an address when it has loaded.
tools::Response pageThatGoesTo(const std::string& address);

// A page that navigates to an address when it is clicked, and requests "/clickable" when it can be clicked.
tools::Response pageThatWaitsForAClick(const std::string& address);

// A page with `body` that requests "/loaded" when it has loaded.
tools::Response pageThatReportsItsLoad(const std::string& body = "");

class EndToEndTest : public testing::Test {
 protected:
  // The site has an ordinary page at "/signin", "/done" and "/start", which the options name. Every option is set.
  explicit EndToEndTest(const tools::ScreenSize& screenSize = {});
  ~EndToEndTest() override;

  void start();

  // Waits until an event makes `condition` true. Fails the test after kTimeout.
  void until(const std::string& what, const std::function<bool()>& condition);
  void untilRequested(const std::string& target);  // by GET
  void untilLogSays(const std::string& message);

  // Waits for the end of the run, which must have exit status 0. Returns what it wrote into the pipe.
  std::string message();

  // start(), then message().
  std::string messageOfARun();

  // Closes the window and returns the message: kWindowClosed, unless the run had already ended.
  std::string messageAfterClosing();

  // The program finds this shell script first in its search path for bwrap.
  void replaceBwrap(const std::string& script);

  ScreenWindow window();
  void click();  // at the center of the window

  // A path for a new folder or file, removed with the test's home.
  std::filesystem::path temporary(const std::string& name) const { return folder_ / name; }

 private:
  std::string eventsSoFar();  // for failure messages

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
