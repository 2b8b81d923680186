// Servers that send nothing. Each window waits a whole minute, so all wait at the same time in one test.

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <list>
#include <string>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/RawServer.h"

namespace endtoend {
namespace {

using std::chrono::steady_clock;

// One of several windows on the same screen.
struct Window {
  Window(Options options, const std::string& signIn, const std::filesystem::path& folder)
      : pipe((std::filesystem::create_directory(folder), folder / "answer")),
        run(prepare(options, signIn), folder / "errors") {}

  const Options& prepare(Options& options, const std::string& signIn) const {
    options.signIn = signIn;
    options.pipe = pipe.path();
    return options;
  }

  MessagePipe pipe;
  SignInRun run;
};

class StalledServerTest : public EndToEndTest {
 protected:
  Window& open(const std::string& signIn) {
    return windows_.emplace_back(options, signIn, temporary("window" + std::to_string(windows_.size())));
  }

  // Waits until the first window has ended.
  void expectNoEndBefore(steady_clock::time_point earliest) {
    const auto ended = [](const Window& each) { return each.run.ended(); };
    const auto hasEndedWindow = [&] { return std::any_of(windows_.begin(), windows_.end(), ended); };
    EXPECT_TRUE(tools::waitUntil(hasEndedWindow, std::chrono::seconds(60) + kTimeout));
    EXPECT_GE(steady_clock::now(), earliest);
  }

  void expectEnd(Window& window) {
    EXPECT_EQ(window.run.exitStatus(), 0) << window.run.standardError();
    EXPECT_EQ(window.pipe.text(), kLoadFailed);
  }

  void expectStillOpen(Window& window) {
    EXPECT_FALSE(window.run.ended());
    window.run.signal(SIGTERM);
    EXPECT_EQ(window.run.exitStatus(), 0) << window.run.standardError();
    EXPECT_EQ(window.pipe.text(), kWindowClosed);
  }

 private:
  std::list<Window> windows_;
};

TEST_F(StalledServerTest, SixtySecondsWithoutDataEndTheRun) {
  steady_clock::time_point lastData;
  site.serve("/stalling", [&](const Request&) {
    lastData = steady_clock::now();  // the idle timer starts later
    return redirectTo(site.address("/stalled"));
  });
  site.hold("/stalled");
  site.serve("/nowhere", redirectTo(""));
  site.serve("/signin", pageThatReportsItsLoad());
  site.serve("/asking", page("<script>fetch('/asked').then(() => prompt('name'))</script>"));
  const RawServer dropping("");

  // These two wait for the user, longer than the others wait for a server.
  Window& ordinary = open(site.address("/signin"));
  Window& asking = open(site.address("/asking"));
  untilRequested("/loaded");
  untilRequested("/asked");

  const steady_clock::time_point begin = steady_clock::now();
  Window& stalled = open(site.address("/stalling"));
  Window& script = open("javascript:0");
  Window& notUtf8 = open("http://\xFF/");
  Window& nowhere = open(site.address("/nowhere"));
  Window& dropped = open(dropping.address("/"));
  untilRequested("/stalled");
  untilRequested("/nowhere");

  expectNoEndBefore(begin + std::chrono::seconds(59));
  expectEnd(stalled);
  EXPECT_GE(steady_clock::now(), lastData + std::chrono::seconds(59));
  for (Window* const each : {&script, &notUtf8, &nowhere, &dropped})
    expectEnd(*each);
  expectStillOpen(ordinary);
  expectStillOpen(asking);

  for (const std::string& address :
       {site.address("/stalled"), std::string("javascript:0"), site.address("/nowhere"), dropping.address("/")})
    EXPECT_TRUE(logSays("didFailProvisionalLoadWithError for URL " + address)) << address;
  EXPECT_THAT(logMessages(), testing::Contains("didFailProvisionalLoadWithError Error code -1001").Times(5));
}

}  // namespace
}  // namespace endtoend
