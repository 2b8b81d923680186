// Abnormal ends of the window: crashes, child processes that die while they start, and exhausted limits. Each writes
// one message.

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Processes.h"
#include "tests/support/Child.h"

namespace endtoend {
namespace {

using testing::AnyOf;

class CrashTest : public EndToEndTest {
 protected:
  // A page that does not arrive, so that nothing else ends the run.
  CrashTest() { site.hold("/signin"); }
  ~CrashTest() override { removeSemaphoreSets(); }

  std::string messageOfTheEnd() {
    until("the end", [this] { return run->ended(); });
    return pipe.text();
  }
};

std::optional<pid_t> childBesides(const std::vector<pid_t>& known) {
  for (const pid_t child : childrenOfThisProcess()) {
    if (std::find(known.begin(), known.end(), child) == known.end()) return child;
  }
  return std::nullopt;
}

class CrashSignalTest : public CrashTest, public testing::WithParamInterface<int> {};

TEST_P(CrashSignalTest, WritesOneMessage) {
  start();
  untilRequested("/signin");
  run->signal(GetParam());
  EXPECT_EQ(messageOfTheEnd(), kLoadFailed);
  EXPECT_NE(run->exitStatus(), 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, CrashSignalTest,
                         testing::Values(SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGQUIT, SIGSEGV, SIGSYS, SIGTRAP),
                         [](const auto& each) { return std::string("SIG") + sigabbrev_np(each.param); });

TEST_F(CrashTest, LeavesNoFileAndNoProcess) {
  adoptOrphans();
  const std::vector<pid_t> before = childrenOfThisProcess();
  start();
  untilRequested("/signin");
  run->signal(SIGSEGV);
  EXPECT_EQ(messageOfTheEnd(), kLoadFailed);
  // The end of an adopted process may add its own children.
  while (const std::optional<pid_t> child = childBesides(before))
    ASSERT_TRUE(waitForExit(*child)) << *child;
  EXPECT_THAT(filesInHome(), testing::ElementsAre("Library", "Library/Logs", "Library/Logs/Kelvo.log"));
  EXPECT_THAT(sandboxFiles(), testing::IsEmpty());
}

class DyingChildTest : public CrashTest, public testing::WithParamInterface<std::tuple<const char*, int>> {};

// In the sandbox the library cannot be loaded.
TEST_P(DyingChildTest, EndsTheRunWithOneMessage) {
  const auto& [program, milliseconds] = GetParam();
  replaceBwrap("exit 1");
  options.environment["LD_PRELOAD"] = std::string(std::getenv("LD_PRELOAD")) + ":" + SVO_DYING_CHILD;
  options.environment["SVO_DYING_CHILD"] = program;
  options.environment["SVO_DYING_AFTER"] = std::to_string(milliseconds);
  start();
  EXPECT_EQ(messageOfTheEnd(), kLoadFailed);
}

INSTANTIATE_TEST_SUITE_P(Processes, DyingChildTest,
                         testing::Combine(testing::Values("WebKitNetworkProcess", "WebKitWebProcess"),
                                          testing::Values(0, 5, 10, 20, 50, 100, 150, 200)),
                         [](const auto& each) {
                           return std::get<0>(each.param) + std::string("After") +
                                  std::to_string(std::get<1>(each.param)) + "ms";
                         });

TEST_F(CrashTest, ADyingSandboxedProcessEndsTheRun) {
  start();
  std::optional<pid_t> process;
  ASSERT_TRUE(
      support::becomesTrue([&] { return (process = descendantNamed(run->pid(), "WebKitWebProces")).has_value(); }));
  kill(*process, SIGKILL);
  EXPECT_EQ(messageOfTheEnd(), kLoadFailed);
}

class LimitTest : public CrashTest, public testing::WithParamInterface<const char*> {};

// Without a descriptor for the display, the display is missing. A later release of a library may need less.
TEST_P(LimitTest, EndsTheRunWithOneMessage) {
#ifdef __SANITIZE_ADDRESS__
  if (GetParam()[1] == 'v') GTEST_SKIP() << "the sanitizer reserves more address space";
#endif
  site.serve("/limited", redirectTo(site.address("/done")));
  options.signIn = site.address("/limited");
  options.wrapper = {"/bin/sh", "-c", std::string("ulimit ") + GetParam() + " && exec \"$@\"", "sh"};
  start();
  EXPECT_THAT(messageOfTheEnd(), AnyOf(kLoadFailed, kOptionsMissing, result(site.address("/done"))))
      << run->standardError();
}

INSTANTIATE_TEST_SUITE_P(Ulimit, LimitTest,
                         testing::Values("-n 9", "-n 12", "-n 16", "-n 17", "-n 18", "-n 19", "-n 20", "-n 21", "-n 22",
                                         "-n 23", "-n 24", "-n 32", "-n 48", "-v 1048576", "-v 4194304"),
                         [](const auto& each) { return each.param[1] + std::string(each.param).substr(3); });

}  // namespace
}  // namespace endtoend
