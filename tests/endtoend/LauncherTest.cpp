// The example launchers: their output, their exit status, and that they remove their pipes.

#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

using testing::EndsWith;
using testing::StartsWith;

constexpr int kNoMessage = 3;

class LauncherTest : public EndToEndTest {
 protected:
  LauncherTest() { std::filesystem::create_directory(temporary("pipes")); }

  std::vector<std::string> command(const std::string& window = SVO_SIGNIN_PROGRAM) {
    return {SVO_LAUNCHER, window, *options.signIn, *options.redirect, *options.enterprise};
  }

  void start(const std::vector<std::string>& command) {
    tools::ChildProcess::Setup setup;
    setup.command = command;
    setup.environment = {{"DISPLAY", display.name()}, {"TMPDIR", temporary("pipes")}};
    std::filesystem::remove(temporary("output"));
    setup.outputFile = temporary("output");
    launcher_ = std::make_unique<tools::ChildProcess>(setup);
  }

  // Waits for the end of the launcher and returns what it printed.
  std::string output() {
    until("the launcher", [&] { return launcher_->ended(); });
    EXPECT_TRUE(std::filesystem::is_empty(temporary("pipes")));
    std::ifstream file(temporary("output"));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // The output for a window that only sends `message`. Sets the exit status.
  std::string outputFor(const std::string& message) {
    std::ofstream(temporary("message")) << message;
    std::ofstream(temporary("window")) << "#!/bin/sh\nfor option do case $option in --pipeName=*) cat '"
                                       << temporary("message").string() << "' >\"${option#*=}\" ;; esac done\n";
    std::filesystem::permissions(temporary("window"), std::filesystem::perms::owner_all);
    start(command(temporary("window")));
    return output();
  }

  std::unique_ptr<tools::ChildProcess> launcher_;
};

TEST_F(LauncherTest, PrintsTheMessageAndItsMeaning) {
  site.serve("/signin", redirectTo(site.address("/done?a=1&b=2")));
  start(command());
  EXPECT_EQ(output(), "message: " + result(site.address("/done?a=1&amp;b=2")) +
                          "\nmeaning: signed in; the result is the query of " + site.address("/done?a=1&b=2") + "\n");
  EXPECT_EQ(launcher_->exitStatus(), 0);
}

TEST_F(LauncherTest, UnescapesTheAddressOnce) {
  EXPECT_THAT(outputFor(result("h?a=1&amp;b=&apos;&lt;&amp;amp;&amp;lt;&quot;&gt;")),
              EndsWith(" is the query of h?a=1&b='<&amp;&lt;\">\n"));
}

TEST_F(LauncherTest, ExitsWithTheErrorNumber) {
  EXPECT_THAT(outputFor(kWindowClosed), EndsWith("meaning: the user closed the window\n"));
  EXPECT_EQ(launcher_->exitStatus(), 1);
  EXPECT_THAT(outputFor(kLoadFailed), EndsWith("meaning: a page failed to load\n"));
  EXPECT_EQ(launcher_->exitStatus(), 2);
  EXPECT_THAT(outputFor(kOptionsMissing), EndsWith("without a required option\n"));
  EXPECT_EQ(launcher_->exitStatus(), 255);
}

TEST_F(LauncherTest, RejectsATruncatedMessage) {
  for (const char* message : {"<result><URL>h?code=12", "<result></result>", "<errorNo><error>1", ""}) {
    EXPECT_THAT(outputFor(message), EndsWith("meaning: the window ended without a message\n"));
    EXPECT_EQ(launcher_->exitStatus(), kNoMessage);
  }
}

TEST_F(LauncherTest, ReadsAMessageOfSixtyKilobytes) {
  const std::string address = site.address("/done#" + std::string(60'000, 'x'));
  site.serve("/signin", pageThatGoesTo(address));
  start(command());
  EXPECT_THAT(output(), StartsWith("message: " + result(address) + "\n"));
}

TEST_F(LauncherTest, WorksWithMoreThan1024OpenDescriptors) {
  site.serve("/signin", redirectTo(site.address("/done")));
  std::vector<std::string> shell = {
      "/bin/bash", "-c",
      "ulimit -n 2048; for ((i = 3; i < 1100; ++i)); do eval \"exec $i</dev/null\"; done; "
      "exec \"$@\"",
      "bash"};
  const std::vector<std::string> launcher = command();
  shell.insert(shell.end(), launcher.begin(), launcher.end());
  start(shell);
  EXPECT_THAT(output(), StartsWith("message: " + result(site.address("/done")) + "\n"));
}

TEST_F(LauncherTest, ReportsAMissingProgram) {
  start(command("/nowhere/svo-signin"));
  EXPECT_EQ(output(), "");
  EXPECT_EQ(launcher_->exitStatus(), kNoMessage);
}

TEST_F(LauncherTest, ClosesTheWindowOnSigterm) {
  start(command());
  untilRequested("/signin");
  launcher_->signal(SIGTERM);
  EXPECT_THAT(output(), StartsWith("message: " + kWindowClosed + "\n"));
  EXPECT_EQ(launcher_->exitStatus(), 1);
}

// The Python program of the README, with this test's addresses in place of the ones there.
class PythonLauncherTest : public LauncherTest {
 protected:
  std::string program(const std::string& window = SVO_SIGNIN_PROGRAM) const {
    std::ifstream readme(SVO_README);
    std::string text(std::istreambuf_iterator<char>(readme), {});
    text.erase(0, text.find(kBegin) + kBegin.size());
    text.resize(text.find("```"));
    replace(text, "/usr/bin/svo-signin", window);
    replace(text, "https://id.example.com/login", *options.signIn);
    replace(text, "https://id.example.com/done", *options.redirect);
    replace(text, "https://id.example.com/enterprise", *options.enterprise);
    return text + "print(message)\n";
  }

  void startPython(const std::string& program) { start({"/usr/bin/python3", "-c", program}); }

 private:
  static inline const std::string kBegin = "```python\n";

  static void replace(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
  }
};

TEST_F(PythonLauncherTest, ReadsTheWholeMessage) {
  const std::string address = site.address("/done#" + std::string(60'000, 'x'));
  site.serve("/signin", pageThatGoesTo(address));
  startPython(program());
  EXPECT_EQ(output(), result(address) + "\n");
}

TEST_F(PythonLauncherTest, AMissingMessageIsEmpty) {
  startPython(program("/bin/true"));
  EXPECT_EQ(output(), "\n");
}

}  // namespace
}  // namespace endtoend
