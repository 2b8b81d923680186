// The whole program, with a double of the web view.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/endtoend/Home.h"
#include "tests/endtoend/MessagePipe.h"
#include "tests/support/Home.h"
#include "tests/tools/hand/VirtualDisplay.h"
#include "tests/tools/support/ChildProcess.h"
#include "tests/tools/support/EventLoop.h"

namespace {

class RunTest : public testing::Test {
 protected:
  // Starts the program and waits for its end. Returns its message.
  std::string run(const std::vector<std::string>& options) {
    tools::ChildProcess::Setup setup;
    setup.command = {SVO_PROGRAM, "--pipeName=" + pipe.path().string()};
    setup.command.insert(setup.command.end(), options.begin(), options.end());
    setup.environment = {{"DISPLAY", display.name()}, {"SVO_TEST_ARGUMENTS", arguments}};
    tools::ChildProcess program(setup);
    EXPECT_TRUE(tools::waitUntil([&] { return program.ended(); }, std::chrono::seconds(50)));
    EXPECT_EQ(program.exitStatus(), 0);
    return pipe.text();
  }

  static std::vector<std::string> signInAt(const std::string& address) {
    return {"--zelURL=" + address, "--redirectURL=cb:/Done", "--redirectType3URL=t3:/start", "--productName=Kelvo"};
  }

  const tools::VirtualDisplay display;
  std::string arguments = "true";
  endtoend::MessagePipe pipe{support::freshHome() + "/pipe"};
};

TEST_F(RunTest, ASignInEndsWithItsAddress) {
  EXPECT_EQ(run(signInAt("then:/cb:/done?code=1&s=2")), "<result><URL>cb:/done?code=1&amp;s=2</URL></result>");
}

TEST_F(RunTest, AnEnterpriseSignInIsFollowed) {
  EXPECT_EQ(run(signInAt("then:/t3:/start?redirect_uri=then:/cb:/done?code=1")),
            "<result><URL>cb:/done?code=1</URL></result>");
}

TEST_F(RunTest, AFailedLoadEndsWith2AndIsLogged) {
  EXPECT_EQ(run(signInAt("gone:/")), "<errorNo><error>2</error></errorNo>");
  EXPECT_FALSE(endtoend::logSays("didFailProvisionalLoadWithError for URL gone:/"));
  EXPECT_TRUE(endtoend::logSays("didFailProvisionalLoadWithError Error code -1003"));
}

TEST_F(RunTest, AClosedWindowEndsWith1) {
  EXPECT_EQ(run(signInAt("close:/")), "<errorNo><error>1</error></errorNo>");
}

TEST_F(RunTest, QuittingEndsWith1) {
  EXPECT_EQ(run(signInAt("quit:/")), "<errorNo><error>1</error></errorNo>");
}

TEST_F(RunTest, TheEndOfTheSessionEndsWith1) {
  EXPECT_EQ(run(signInAt("logout:/")), "<errorNo><error>1</error></errorNo>");
}

TEST_F(RunTest, TheApplicationIsActiveOnceShown) {
  EXPECT_EQ(run(signInAt("active:/cb:/done")), "<result><URL>cb:/done</URL></result>");
}

TEST_F(RunTest, WithoutArgumentsTheOptionsAreMissing) {
  arguments = "none";
  EXPECT_EQ(run(signInAt("then:/cb:/done")), "");
}

TEST_F(RunTest, NoMemoryForTheArgumentsEndsTheRun) {
  arguments = "endless";
  EXPECT_EQ(run(signInAt("then:/cb:/done")), "");
}

TEST_F(RunTest, MissingOptionsEndWith255) {
  EXPECT_EQ(run({}), "<errorNo><error>255</error></errorNo>");
}

TEST_F(RunTest, TheLogNamesBuildAndLevel) {
  run({});
  EXPECT_THAT(endtoend::logMessages(),
              testing::ElementsAre("Build Version - 9.0.0.121", "Logging Level verbosity Set  to 4"));
  EXPECT_THAT(endtoend::logLines(), testing::Each(testing::HasSubstr(" | [INFO] |  | QSU | SVO | SVO |  |  | ")));
}

}  // namespace
