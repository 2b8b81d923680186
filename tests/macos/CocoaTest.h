// The fixture of the Cocoa tests: the delegate, a real window on a virtual display, a double of the web view, and the
// launcher's pipe.

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
#include "tests/macos/doubles/CallLog.h"
#include "tests/macos/doubles/SystemDoubles.h"
#include "tests/macos/doubles/WebView.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

using Calls = std::vector<std::string>;

NSString* string(const std::string& text);
NSURLRequest* requestFor(const std::string& address);

class CocoaTest : public testing::Test {
 protected:
  CocoaTest();
  ~CocoaTest() override;

  static CommandLine& options() { return *CommandLine::GetInstance(); }

  // Calls `applicationDidFinishLaunching:`. Returns the recorded calls.
  Calls launch();

  // Launches and finishes the spinner page, so that the sign-in page is requested.
  void signIn();

  // Reports that the main frame has finished. Returns the recorded calls.
  Calls finish(const std::string& address) { return finish(requestFor(address)); }
  Calls finish(NSURLRequest* request);

  // Reports that a load of the frame has failed, a provisional one before its page replaced the former one. Returns the
  // messages that are then logged.
  std::vector<std::string> fail(WebFrame* frame, const std::string& address, NSInteger code, bool provisional = false);

  WebFrame* mainFrame() const { return [[delegate webView] mainFrame]; }
  std::string message() { return pipe.text(); }

  NSAutoreleasePool* const pool;
  endtoend::MessagePipe pipe;
  RecordingWindow* window = nil;
  WebView* webView = nil;
  AppDelegate* delegate = nil;
};
