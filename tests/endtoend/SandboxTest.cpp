// The sandbox of the web process: enabled where it works; elsewhere the sign-in continues without it.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Processes.h"

namespace endtoend {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr char kNoSandbox[] = "bwrap does not work here";
constexpr char kRefused[] = "bwrap refused to start a program";
constexpr char kTimedOut[] = "bwrap did not end within 4 seconds";

class SandboxTest : public EndToEndTest {
 protected:
  std::chrono::steady_clock::duration timeOfARun() {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(messageOfARun(), EndsWith(result(site.address("/done"))));
    return std::chrono::steady_clock::now() - begin;
  }

  bool warned(const std::string& of) const { return run->standardError().find(of) != std::string::npos; }

  void expectASignInWithout(std::string reason) {
    site.serve("/signin", redirectTo(site.address("/done")));
    const bool timedOut = timeOfARun() >= std::chrono::seconds(6);

    // On a busy machine the trial may time out before the refusal.
    if (timedOut && reason == kRefused && warned(kTimedOut)) reason = kTimedOut;
    const std::string warning = kNoSandbox + (" (" + reason) + "); pages run without a sandbox";
    EXPECT_THAT(run->standardError(), HasSubstr("svo-signin: " + warning + "\n"));
    EXPECT_THAT(logLines(), Contains(AllOf(HasSubstr("| [WARN] |  | QSU | SVO | SVO |"), EndsWith(" | " + warning))));
  }
};

TEST_F(SandboxTest, TheWebProcessRunsInTheSandbox) {
  site.serve("/signin", pageThatReportsItsLoad());
  start();
  untilRequested("/loaded");
  const bool isSandboxed = descendantNamed(run->pid(), "bwrap").has_value();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  if (!isSandboxed) GTEST_SKIP() << run->standardError();
  EXPECT_THAT(run->standardError(), Not(HasSubstr(kNoSandbox)));
}

TEST_F(SandboxTest, NoSandboxFileIsLeft) {
  site.serve("/signin", redirectTo(site.address("/done")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
  EXPECT_THAT(sandboxFiles(), testing::IsEmpty());
}

TEST_F(SandboxTest, ARefusedSandboxDoesNotEndTheRun) {
  replaceBwrap("exit 1");
  expectASignInWithout(kRefused);
}

class OddFolderSandboxTest : public SandboxTest, public testing::WithParamInterface<const char*> {};

// bwrap rejects the subfolders that WebKit mounts.
TEST_P(OddFolderSandboxTest, AFileAsFolderIsNoFailure) {
  std::ofstream(temporary("file"));
  options.environment[GetParam()] = temporary("file");
  expectASignInWithout(kRefused);
}

INSTANTIATE_TEST_SUITE_P(Folders, OddFolderSandboxTest,
                         testing::Values("XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"));

TEST_F(SandboxTest, AHangingTrialDoesNotEndTheRun) {
  replaceBwrap("exec sleep 1000");
  expectASignInWithout(kTimedOut);
}

TEST_F(SandboxTest, AFailedTrialIsRepeatedOnce) {
  site.serve("/signin", redirectTo(site.address("/done")));
  timeOfARun();
  const bool works = !warned(kNoSandbox);

  const std::filesystem::path trials = temporary("trials");
  replaceBwrap("echo >>'" + trials.string() + "'; [ $(wc -l <'" + trials.string() +
               "') -gt 1 ] && exec /usr/bin/bwrap \"$@\"; exit 1");
  const auto time = timeOfARun();
  if (warned(kTimedOut) || (warned(kRefused) && time >= std::chrono::seconds(2)))
    GTEST_SKIP() << "the machine is too busy";
  EXPECT_EQ(std::filesystem::file_size(trials), 2u);
  EXPECT_EQ(warned(kNoSandbox), !works);
}

TEST_F(SandboxTest, AMissingBubblewrapDoesNotEndTheRun) {
  std::filesystem::create_directory(temporary("bin"));
  options.environment["PATH"] = temporary("bin");
  expectASignInWithout("bwrap is not installed");
}

}  // namespace
}  // namespace endtoend
