#include "tests/macos/CocoaTest.h"

#include <cstddef>
#include <cstdlib>

#include "applog/Logger.h"
#include "tests/endtoend/Home.h"
#include "tests/macos/doubles/DisabledLeakCheck.h"
#include "tests/tools/hand/VirtualDisplay.h"

namespace {

constexpr NSUInteger kStyle = NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask;

// The application reads the display from the environment, and keeps it for the whole process. It draws the window
// frames, because there is no window manager.
void openApplication() {
  static const tools::VirtualDisplay display;
  const doubles::DisabledLeakCheck scope;
  ::setenv("DISPLAY", display.name().c_str(), 1);
  [[NSUserDefaults standardUserDefaults]
      registerDefaults:[NSDictionary dictionaryWithObject:@"NO" forKey:@"GSBackHandlesWindowDecorations"]];
  [RecordingApplication sharedApplication];
}

}  // namespace

NSString* string(const std::string& text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

NSURLRequest* requestFor(const std::string& address) {
  return [NSURLRequest requestWithURL:[NSURL URLWithString:string(address)]];
}

CocoaTest::CocoaTest() : pool([[NSAutoreleasePool alloc] init]), pipe(endtoend::homeFolder() / "pipe") {
  openApplication();
  doubles::replaceDesktopMethods();
  doubles::reset();

  spinnerHTMLBaseURL.clear();
  options() = CommandLine();
  options().zel_url = "cb:/Host/Login";
  options().redirect_url = "cb:/done";
  options().redirect_type3_url = "t3:/start";
  options().pipe_name = pipe.path().string();
  Logger::getInstance()->setLogLevel(Log_Level_Info, "SVO", nullptr);

  window = [[RecordingWindow alloc] initWithContentRect:NSMakeRect(100, 200, 600, 400)
                                              styleMask:kStyle
                                                backing:NSBackingStoreBuffered
                                                  defer:NO];
  [window setReleasedWhenClosed:NO];
  webView = [[WebView alloc] initWithFrame:NSMakeRect(0, 0, 600, 400)];
  [[window contentView] addSubview:webView];
  delegate = [[AppDelegate alloc] init];
  [delegate setWindow:window];
  [delegate setWebView:webView];
  [window setTitle:@"From the interface file"];
  [window orderFront:nil];
  (void)doubles::takeCalls();
}

CocoaTest::~CocoaTest() {
  [NSApp setDelegate:nil];
  [window close];
  [delegate release];
  [webView release];
  [window release];
  [pool release];
}

Calls CocoaTest::launch() {
  [delegate applicationDidFinishLaunching:nil];
  return doubles::takeCalls();
}

void CocoaTest::signIn() {
  (void)launch();
  (void)finish(spinnerHTMLBaseURL);
}

Calls CocoaTest::finish(NSURLRequest* request) {
  [mainFrame() showRequest:request];
  [delegate webView:webView didFinishLoadForFrame:mainFrame()];
  return doubles::takeCalls();
}

std::vector<std::string> CocoaTest::fail(WebFrame* frame, const std::string& address, NSInteger code,
                                         bool provisional) {
  const std::size_t before = endtoend::logMessages().size();
  if (!provisional) [frame showRequest:requestFor(address)];
  NSError* const error = [NSError errorWithDomain:@"NSURLErrorDomain" code:code userInfo:nil];
  if (provisional) {
    [delegate webView:webView didFailProvisionalLoadWithError:error forFrame:frame];
  } else {
    [delegate webView:webView didFailLoadWithError:error forFrame:frame];
  }
  std::vector<std::string> logged = endtoend::logMessages();
  logged.erase(logged.begin(), logged.begin() + static_cast<std::ptrdiff_t>(before));
  return logged;
}
