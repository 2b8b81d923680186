// The delegate with a real window on a screen of its own, its web view a double, the launcher's pipe open.

#pragma once

#include <gmock/gmock-more-matchers.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "app/SpinnerPage.h"
#include "app/cocoa/AppDelegate.h"
#include "tests/endtoend/MessagePipe.h"
#include "tests/macos/doubles/Application.h"
#include "tests/macos/doubles/Journal.h"
#include "tests/macos/doubles/WebView.h"
#include "tests/tools/hand/VirtualDisplay.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

using Asked = std::vector<std::string>;

NSString* string(const std::string& text);
NSURLRequest* requestFor(const std::string& address);

class CocoaTest : public testing::Test {
 protected:
  CocoaTest();
  ~CocoaTest() override;

  static CommandLine& options() { return *CommandLine::GetInstance(); }

  // The launch callback, as the application's loop makes it.
  Asked launch();

  // The run as it stands when the sign-in page has been asked for.
  void signIn();

  // The main frame has finished; answers with what the program asked for then.
  Asked finish(const std::string& address) { return finish(requestFor(address)); }
  Asked finish(NSURLRequest* request);

  // A load of the frame has failed; the answer is what the program asked for and what it logged, one behind the other.
  Asked fail(WebFrame* frame, const std::string& address, NSInteger code, bool provisional = false);

  WebFrame* mainFrame() const { return [[delegate webView] mainFrame]; }
  std::string message() { return pipe.text(); }

  const tools::VirtualDisplay display;
  NSAutoreleasePool* const pool;
  endtoend::MessagePipe pipe;
  JournalWindow* window = nil;
  WebView* webView = nil;
  AppDelegate* delegate = nil;
};
