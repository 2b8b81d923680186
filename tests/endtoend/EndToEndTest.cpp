#include "tests/endtoend/EndToEndTest.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace endtoend {
namespace {

std::filesystem::path makeFolder() {
  std::string folder = std::filesystem::temp_directory_path() / "endtoend.XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no folder for the test");
  return folder;
}

}  // namespace

std::string result(const std::string& escapedAddress) {
  return "<result><URL>" + escapedAddress + "</URL></result>";
}

tools::Response pageThatGoesTo(const std::string& address) {
  return page("<script>onload = () => setTimeout(() => { location.href = '" + address + "' })</script>");
}

tools::Response pageThatWaitsForAClick(const std::string& address) {
  return page("<script>onclick = () => { location.href = '" + address +
              "' }; onload = () => fetch('/clickable')</script>");
}

tools::Response pageThatReportsItsLoad(const std::string& body) {
  return page(body + "<script>onload = () => fetch('/loaded')</script>");
}

EndToEndTest::EndToEndTest(const tools::ScreenSize& screenSize)
    : folder_(makeFolder()),
      logs_(logFile().parent_path()),
      display(screenSize),
      screen(display.name()),
      pipe(folder_ / "answer") {
  std::filesystem::remove(logFile());  // of an earlier test in the same home
  for (const char* path : {"/signin", "/done", "/start"})
    site.serve(path, page(path));
  options.signIn = site.address("/signin");
  options.redirect = site.address("/done");
  options.enterprise = site.address("/start");
  options.product = "Example Product";
  options.enterpriseTitle = "Example Enterprise";
  options.pipe = pipe.path();
  options.program = SVO_SIGNIN_PROGRAM;
  options.environment = {{"DISPLAY", display.name()}};
}

EndToEndTest::~EndToEndTest() {
  run.reset();
  std::error_code ignored;  // the whole home is removed afterward
  std::filesystem::remove_all(folder_, ignored);
}

void EndToEndTest::start() {
  run = std::make_unique<SignInRun>(options, temporary("errors"));
}

void EndToEndTest::until(const std::string& what, const std::function<bool()>& condition) {
  if (!tools::waitUntil(condition, kTimeout)) throw std::runtime_error("timed out waiting for " + what + eventsSoFar());
}

std::string EndToEndTest::eventsSoFar() {
  std::string text = "\npipe: " + pipe.text();
  if (run) text += "\nended: " + std::to_string(run->ended()) + "\nstandard error: " + run->standardError();
  for (const std::string& each : site.requestLines())
    text += "\nrequested: " + each;
  for (const std::string& each : logMessages())
    text += "\nlogged: " + each;
  return text;
}

void EndToEndTest::untilRequested(const std::string& target) {
  until("the request for " + target, [&] { return site.wasRequested("GET " + target); });
}

void EndToEndTest::untilLogSays(const std::string& message) {
  until("the log line " + message, [&] { return logSays(message); });
}

std::string EndToEndTest::message() {
  EXPECT_EQ(run->exitStatus(), 0) << run->standardError();
  return pipe.text();
}

std::string EndToEndTest::messageOfARun() {
  start();
  return message();
}

std::string EndToEndTest::messageAfterClosing() {
  screen.close(window().id);
  return message();
}

void EndToEndTest::replaceBwrap(const std::string& script) {
  std::filesystem::create_directory(temporary("bin"));
  std::ofstream(temporary("bin/bwrap")) << "#!/bin/sh\n" << script << "\n";
  std::filesystem::permissions(temporary("bin/bwrap"), std::filesystem::perms::owner_all);
  options.environment["PATH"] = temporary("bin").string() + ":" + std::getenv("PATH");
}

ScreenWindow EndToEndTest::window() {
  std::optional<ScreenWindow> found;
  until("the window", [&] { return (found = screen.windowOf(run->pid())).has_value(); });
  return *found;
}

void EndToEndTest::click() {
  const Area frame = window().frame;
  screen.click(frame.x + frame.width / 2, frame.y + frame.height / 2);
}

}  // namespace endtoend
