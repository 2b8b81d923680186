// The fixture of the Cocoa tests: the delegate with a real window on a virtual screen, a double of the web view, and
// the launcher's pipe.

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

  // Calls the launch callback. Returns the recorded calls.
  Asked launch();

  // Brings the run to the point where the sign-in page is requested.
  void signIn();

  // Reports that the main frame has finished. Returns the recorded calls.
  Asked finish(const std::string& address) { return finish(requestFor(address)); }
  Asked finish(NSURLRequest* request);

  // Reports that a load of the frame has failed. Returns the recorded calls, then the logged messages.
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
