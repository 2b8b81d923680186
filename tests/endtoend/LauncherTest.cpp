// The example launchers: what they make of the messages, and what they leave behind.

#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "examples/launcher/Answer.h"
#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(AnswerTest, TheAddressIsUnescapedOnce) {
  EXPECT_EQ(launcher::read(result("h?a=1&amp;b=&apos;&lt;&amp;amp;&quot;&gt;")).address, "h?a=1&b='<&amp;\">");
}

TEST(AnswerTest, EachCodeIsRead) {
  EXPECT_EQ(launcher::read(result("h")).code, launcher::kSignedIn);
  EXPECT_EQ(launcher::read(kWindowClosed).code, launcher::kWindowClosed);
  EXPECT_EQ(launcher::read(kLoadFailed).code, launcher::kLoadFailed);
  EXPECT_EQ(launcher::read(kOptionsMissing).code, launcher::kOptionsMissing);
}

TEST(AnswerTest, AMessageThatWasCutIsNoAnswer) {
  EXPECT_EQ(launcher::read("<result><URL>h?code=12").code, launcher::kNoAnswer);
  EXPECT_EQ(launcher::read("<result></result>").code, launcher::kNoAnswer);
  EXPECT_EQ(launcher::read("").code, launcher::kNoAnswer);
}

class LauncherTest : public EndToEndTest {
 protected:
  LauncherTest() { std::filesystem::create_directory(temporary("pipes")); }

  void startLauncher(const std::string& program = SVO_SIGNIN_PROGRAM) {
    startLauncher({SVO_LAUNCHER, program, *options.signIn, *options.redirect, *options.enterprise});
  }

  void startLauncher(const std::vector<std::string>& command) {
    tools::ChildProcess::Setup setup;
    setup.command = command;
    setup.environment = {{"DISPLAY", display.name()}, {"TMPDIR", temporary("pipes")}};
    setup.outputFile = temporary("output");
    launcher_ = std::make_unique<tools::ChildProcess>(setup);
  }

  // Waits for the launcher's end and gives what it printed. It must have put its pipe away.
  std::string output() {
    until("the launcher", [&] { return launcher_->ended(); });
    EXPECT_TRUE(std::filesystem::is_empty(temporary("pipes")));
    std::ifstream file(temporary("output"));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::unique_ptr<tools::ChildProcess> launcher_;
};

TEST_F(LauncherTest, PrintsTheMessageAndWhatItMeans) {
  site.serve("/signin", redirectTo(site.address("/done?a=1&b=2")));
  startLauncher();
  EXPECT_EQ(output(), "message: " + result(site.address("/done?a=1&amp;b=2")) +
                          "\nmeaning: signed in; the result is the query of " + site.address("/done?a=1&b=2") + "\n");
  EXPECT_EQ(launcher_->exitStatus(), 0);
}

TEST_F(LauncherTest, TakesAMessageOfSixtyKilobytesWhole) {
  const std::string address = site.address("/done#" + std::string(60'000, 'x'));
  site.serve("/signin", pageThatGoesTo(address));
  startLauncher();
  EXPECT_THAT(output(), StartsWith("message: " + result(address) + "\n"));
}

TEST_F(LauncherTest, AWindowWithoutAMessageIsReported) {
  startLauncher("/bin/true");
  EXPECT_THAT(output(), HasSubstr("ended without an answer"));
  EXPECT_EQ(launcher_->exitStatus(), launcher::kNoAnswer);
}

TEST_F(LauncherTest, AProgramThatIsNotThereIsReported) {
  startLauncher("/nowhere/svo-signin");
  EXPECT_EQ(output(), "");
  EXPECT_EQ(launcher_->exitStatus(), launcher::kNoAnswer);
}

TEST_F(LauncherTest, StoppingItClosesTheWindow) {
  startLauncher();
  untilRequested("/signin");
  launcher_->signal(SIGTERM);
  EXPECT_THAT(output(), StartsWith("message: " + kWindowClosed + "\n"));
  EXPECT_EQ(launcher_->exitStatus(), launcher::kWindowClosed);
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

  void startPython(const std::string& program) { startLauncher({"/usr/bin/python3", "-c", program}); }

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
