// The example launcher: what it makes of the answers, and what it leaves behind.

#include <signal.h>

#include <fstream>
#include <iterator>

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
    examples::ChildProcess::Setup setup;
    setup.command = {SVO_LAUNCHER, program, *options.signIn, *options.redirect, *options.enterprise};
    setup.environment = {{"DISPLAY", display.name()}, {"TMPDIR", temporary("pipes")}};
    setup.outputFile = temporary("output");
    launcher_ = std::make_unique<examples::ChildProcess>(setup);
  }

  // Waits for the launcher's end and gives what it printed. It must have put its pipe away.
  std::string output() {
    until("the launcher", [&] { return launcher_->ended(); });
    EXPECT_TRUE(std::filesystem::is_empty(temporary("pipes")));
    std::ifstream file(temporary("output"));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::unique_ptr<examples::ChildProcess> launcher_;
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

TEST_F(LauncherTest, AWindowThatEndsWithoutAnAnswerIsReported) {
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
  untilAsked("/signin");
  launcher_->signal(SIGTERM);
  EXPECT_THAT(output(), StartsWith("message: " + kWindowClosed + "\n"));
  EXPECT_EQ(launcher_->exitStatus(), launcher::kWindowClosed);
}

}  // namespace
}  // namespace endtoend
