// svo-signin-ask with the real window, and the programs of the README that use it. AskTest has its other cases.

#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Processes.h"
#include "tests/support/Files.h"
#include "tests/tools/support/ClosedPort.h"

namespace endtoend {
namespace {

class LauncherTest : public EndToEndTest {
 protected:
  LauncherTest() {
    std::filesystem::create_directory(temporary("pipes"));
    adoptOrphans();
  }

  std::vector<std::string> command() const {
    return {SVO_ASK, "--zelURL=" + *options.signIn, "--redirectURL=" + *options.redirect,
            "--redirectType3URL=" + *options.enterprise};
  }

  void start(const std::vector<std::string>& command) {
    tools::ChildProcess::Setup setup;
    setup.command = command;
    setup.environment = {{"DISPLAY", display.name()}, {"TMPDIR", temporary("pipes")}};
    setup.environment["PATH"] = std::filesystem::path(SVO_ASK).parent_path().string() + ":" + std::getenv("PATH");
    std::filesystem::remove(temporary("output"));
    setup.outputFile = temporary("output");
    launcher_ = std::make_unique<tools::ChildProcess>(setup);
  }

  // Waits for the end of the launcher and returns what it printed.
  std::string output() {
    until("the launcher", [&] { return launcher_->ended(); });
    EXPECT_TRUE(std::filesystem::is_empty(temporary("pipes")));
    return support::contentsOf(temporary("output"));
  }

  std::unique_ptr<tools::ChildProcess> launcher_;
};

TEST_F(LauncherTest, PrintsTheAddress) {
  site.serve("/signin", redirectTo(site.address("/done?a=1&b=2")));
  start(command());
  EXPECT_EQ(output(), site.address("/done?a=1&b=2\n"));
  EXPECT_EQ(launcher_->exitStatus(), 0);
}

TEST_F(LauncherTest, ReadsAMessageLongerThanTheDefaultPipe) {
  const std::string address = site.address("/done#" + std::string(200'000, 'x'));
  site.serve("/signin", pageThatGoesTo(address));
  start(command());
  EXPECT_EQ(output(), address + "\n");
}

TEST_F(LauncherTest, ClosesTheWindowOnSigterm) {
  start(command());
  untilRequested("/signin");
  launcher_->signal(SIGTERM);
  EXPECT_EQ(output(), "");
  EXPECT_EQ(launcher_->exitStatus(), 1);
}

TEST_F(LauncherTest, TheWindowClosesWithAKilledLauncher) {
  start(command());
  untilRequested("/signin");
  const std::optional<pid_t> worker = descendantNamed(launcher_->pid(), "svo-signin-ask");
  const std::optional<pid_t> window = descendantNamed(worker.value(), "svo-signin");
  launcher_->signal(SIGKILL);
  EXPECT_TRUE(waitForExit(worker.value()));
  EXPECT_TRUE(waitForExit(window.value()));
  EXPECT_EQ(output(), "");
}

TEST_F(LauncherTest, TheTimeoutClosesAHangingPage) {
  site.serve("/signin", page("<script>for (;;);</script>"));
  std::vector<std::string> timed = command();
  timed.emplace_back("--timeout=1");
  start(timed);
  EXPECT_EQ(output(), "");
  EXPECT_EQ(launcher_->exitStatus(), 1);
}

TEST_F(LauncherTest, AMissingDisplayIsError255) {
  std::vector<std::string> hidden = command();
  hidden.insert(hidden.begin(), {"/usr/bin/env", "-u", "DISPLAY"});
  start(hidden);
  EXPECT_EQ(output(), "");
  EXPECT_EQ(launcher_->exitStatus(), 255);
}

// The programs of the README, with this test's addresses in place of the ones there.
class ReadmeTest : public LauncherTest {
 protected:
  std::string program(const std::string& language) const {
    std::string text = support::contentsOf(SVO_README);
    const std::string begin = "```" + language + "\n";
    text.erase(0, text.find("## Use it from a launcher"));
    text.erase(0, text.find(begin) + begin.size());
    text.resize(text.find("```"));
    replace(text, "https://id.example.com/login", *options.signIn);
    replace(text, "https://id.example.com/done", *options.redirect);
    replace(text, "https://id.example.com/enterprise", *options.enterprise);
    return text;
  }

  // The output of the program `language` after a sign-in, and then after a failed load.
  void expectOutputs(const std::vector<std::string>& interpreter, const std::string& language,
                     const std::string& signedIn, const std::string& failed) {
    std::vector<std::string> whole = interpreter;
    site.serve("/signin", redirectTo(site.address("/done?code=1")));
    whole.push_back(program(language));
    start(whole);
    EXPECT_EQ(output(), signedIn);

    const tools::ClosedPort closedPort;
    site.serve("/signin", redirectTo(closedPort.address()));
    start(whole);
    EXPECT_EQ(output(), failed);
  }

 private:
  static void replace(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
  }
};

TEST_F(ReadmeTest, TheShellProgramWorks) {
  expectOutputs({"/bin/sh", "-c"}, "sh", "signed in: " + site.address("/done?code=1\n"), "code 2\n");
}

TEST_F(ReadmeTest, ThePythonProgramWorks) {
  expectOutputs({"/usr/bin/python3", "-c"}, "python", "0 " + site.address("/done?code=1\n"), "2 None\n");
}

TEST_F(ReadmeTest, TheNodeProgramWorks) {
  expectOutputs({"/usr/bin/node", "-e"}, "js", "0 " + site.address("/done?code=1\n"), "2 null\n");
}

}  // namespace
}  // namespace endtoend
