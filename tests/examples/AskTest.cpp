// svo-signin-ask with a shell script in place of the window. LauncherTest has the real window.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Shell.h"

namespace {

namespace fs = std::filesystem;
using support::Outcome;
using support::run;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char kAddresses[] = " --zelURL=http://h/s --redirectURL=http://h/d --redirectType3URL=http://h/e ";

// Parts of scripts. `first` and `second` are the two processes of svo-signin-ask.
constexpr char kFindProcesses[] = "second=$PPID; first=$(cut -d' ' -f4 /proc/$second/stat)\n";
// The pipe may be removed, or nothing may read it, when the window closes: it is opened before. Bash cannot run a trap
// while it reads a line with a substitution: the descriptor without input, for kWaitForSignals, is opened before, too.
constexpr char kCloseOnSigterm[] =
    "exec 3<> <(:) 4<>\"$pipe\"\n"
    "trap 'echo >\"$here/closed\"; echo -n \"<errorNo><error>1</error></errorNo>\" >&4; exit' TERM\n";
// Without a child process, which would outlive a killed script.
constexpr char kWaitForSignals[] = "while :; do read -rt 0.1 -u 3; done\n";

class AskTest : public testing::Test {
 protected:
  AskTest() {
    fs::create_directory(folder / "bin");
    fs::create_directory(folder / "pipes");
    fs::copy_file(SVO_ASK, folder / "bin/svo-signin-ask");
  }
  ~AskTest() override { EXPECT_THAT(support::namesIn(folder / "pipes"), IsEmpty()); }

  // `script` may use $pipe, the path of the pipe, and $here, the test's folder.
  void makeWindow(const std::string& script, const std::string& path = "bin/svo-signin") {
    support::writeFile(folder / path, "#!/bin/bash\nhere='" + folder.path() +
                                          "'; for option do case $option in --pipeName=*) pipe=${option#*=} ;; esac; "
                                          "done\n" +
                                          script);
    fs::permissions(folder / path, fs::perms::owner_all);
  }

  // The window writes `message`.
  void makeWindowThatWrites(const std::string& message) {
    support::writeFile(folder / "text", message);
    makeWindow("cat \"$here/text\" >\"$pipe\"\n");
  }

  // The window, which SIGTERM closes, runs `script` first.
  void makeWaitingWindow(const std::string& script) {
    makeWindow(std::string(kFindProcesses) + kCloseOnSigterm + script + "\n" + kWaitForSignals);
  }

  std::string command(const std::string& options = kAddresses) const {
    return "TMPDIR='" + folder.path() + "/pipes' '" + folder.path() + "/bin/svo-signin-ask' " + options;
  }

  Outcome ask(const std::string& options = "") const { return run(command(kAddresses + options)); }

  bool windowWasClosed() const { return fs::exists(folder / "closed"); }

  support::TemporaryFolder folder;
};

TEST_F(AskTest, PrintsTheAddressUnescapedOnce) {
  makeWindowThatWrites("<result><URL>h?a=1&amp;b=&apos;&lt;&amp;amp;&amp;lt;&quot;&gt;&x;&amp</URL></result>");
  const Outcome outcome = ask();
  EXPECT_EQ(outcome.output, "h?a=1&b='<&amp;&lt;\">&x;&amp\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(AskTest, ExitsWithTheErrorOfTheMessage) {
  for (const int error : {1, 2, 255}) {
    makeWindowThatWrites("<errorNo><error>" + std::to_string(error) + "</error></errorNo>");
    EXPECT_EQ(ask().status, error);
    EXPECT_EQ(ask().output, "");
    EXPECT_EQ(ask("--json").output, "{\"code\":" + std::to_string(error) + ",\"url\":null}\n");
  }
}

TEST_F(AskTest, ReportsATruncatedMessage) {
  for (const char* const message : {"<result><URL>h?code=12", "<result></result>", "<errorNo><error>1",
                                    "<errorNo><error>7</error></errorNo>", "<result><URL></URL></result>"}) {
    makeWindowThatWrites(message);
    EXPECT_EQ(ask().output, "svo-signin-ask: no complete message from the window, whose exit status is 0\n");
    EXPECT_EQ(ask().status, 3);
  }
}

TEST_F(AskTest, ReportsAKilledWindow) {
  makeWindow("kill -KILL $$\n");
  EXPECT_EQ(ask().output, "svo-signin-ask: no complete message from the window, which was ended by signal 9\n");
  EXPECT_EQ(ask().status, 3);
}

TEST_F(AskTest, KeepsTheMessageOfAKilledWindow) {
  makeWindow("echo -n '<result><URL>h</URL></result>' >\"$pipe\"; kill -KILL $$\n");
  EXPECT_EQ(ask().output, "h\n");
}

TEST_F(AskTest, ReportsAMissingWindow) {
  const Outcome outcome = run("PATH=/nowhere " + command(std::string(kAddresses) + "--json"));
  EXPECT_THAT(outcome.output, HasSubstr("svo-signin-ask: cannot start svo-signin: No such file or directory\n"));
  EXPECT_THAT(outcome.output, testing::EndsWith("{\"code\":3,\"url\":null}\n"));
  EXPECT_EQ(outcome.status, 3);
}

TEST_F(AskTest, FindsTheWindowInPath) {
  fs::create_directory(folder / "other");
  makeWindow("echo -n '<result><URL>other</URL></result>' >\"$pipe\"\n", "other/svo-signin");
  EXPECT_EQ(run("PATH=\"" + (folder / "other") + ":$PATH\" " + command()).output, "other\n");
  makeWindowThatWrites("<result><URL>beside</URL></result>");
  EXPECT_EQ(run("PATH=\"" + (folder / "other") + ":$PATH\" " + command()).output, "beside\n");
}

TEST_F(AskTest, PassesTheOptionsAndAPrivatePipe) {
  makeWindow(
      "for option do echo \"$option\"; done >\"$here/options\"\nstat -c '%a %F' \"${pipe%/*}\" \"$pipe\" "
      ">\"$here/modes\"\n");
  ask("'--productName=A \"b\"' --type3WindowTitle= --timeout=99 --json");
  std::vector<std::string> options = support::linesOf(folder / "options");
  ASSERT_THAT(options, testing::SizeIs(6));
  EXPECT_THAT(options.back(), StartsWith("--pipeName=" + (folder / "pipes/")));
  options.pop_back();
  EXPECT_THAT(options, ElementsAre("--zelURL=http://h/s", "--redirectURL=http://h/d", "--redirectType3URL=http://h/e",
                                   "--productName=A \"b\"", "--type3WindowTitle="));
  EXPECT_THAT(support::linesOf(folder / "modes"), ElementsAre("700 directory", "600 fifo"));
}

TEST_F(AskTest, StandardOutputHasTheResultOnly) {
  makeWindow("echo noise; echo -n '<result><URL>h</URL></result>' >\"$pipe\"\n");
  EXPECT_EQ(run("{ " + command() + " 2>/dev/null; }").output, "h\n");
  EXPECT_EQ(run("{ " + command() + " 2>&-; }").output, "h\n");
}

TEST_F(AskTest, JsonKeepsCharactersAndEncodesOtherBytes) {
  makeWindowThatWrites(
      "<result><URL>a&quot;\\/\n\x01\x7F é€😀 \xFF \xC3 \xC0\x80 \xED\xA0\x80 \xF5\x80\x80\x80 \xE2\x82</URL></result>");
  EXPECT_EQ(
      ask("--json").output,
      "{\"code\":0,\"url\":\"a\\u0022\\u005c/\\u000a\\u0001\x7F é€😀 %FF %C3 %C0%80 %ED%A0%80 %F5%80%80%80 %E2%82\"}\n");
}

TEST_F(AskTest, JsonIsValidForAnyBytes) {
  std::string bytes;
  for (int i = 0; i < 65'536; ++i)
    bytes += {static_cast<char>(i / 256), static_cast<char>(i % 256)};
  makeWindowThatWrites("<result><URL>" + bytes + "</URL></result>");
  const Outcome check =
      run("{ " + command(std::string(kAddresses) + "--json") +
          "; } | python3 -c 'import json, sys; print(json.loads(sys.stdin.buffer.read())[\"code\"])'");
  EXPECT_EQ(check.output, "0\n");
}

TEST_F(AskTest, RejectsWrongOptions) {
  makeWindowThatWrites("<result><URL>h</URL></result>");
  const std::vector<std::string> wrong = {
      "--pipeName=/p", "--zelURL=twice", "--productName", "word",      "--timeout=0",
      "--timeout=-1",  "--timeout=1s",   "--timeout=",    "--timeout", "--timeout=999999999999"};
  for (const std::string& option : wrong) {
    const Outcome outcome = ask(option + " --json");
    EXPECT_THAT(outcome.output, StartsWith("svo-signin-ask: ")) << option;
    EXPECT_THAT(outcome.output, HasSubstr(option.substr(0, option.find('=')))) << option;
    EXPECT_THAT(outcome.output, testing::EndsWith("{\"code\":255,\"url\":null}\n")) << option;
    EXPECT_EQ(outcome.status, 255) << option;
  }
}

TEST_F(AskTest, RejectsMissingAddresses) {
  const Outcome outcome = run(command("--zelURL=http://h/s --redirectURL= --redirectType3URL=http://h/e"));
  EXPECT_EQ(outcome.output, "svo-signin-ask: --redirectURL is missing\n");
  EXPECT_EQ(outcome.status, 255);
}

TEST_F(AskTest, HelpNamesEveryOption) {
  const Outcome outcome = run(command("--help"));
  EXPECT_EQ(outcome.status, 0);
  for (const char* const option : {"--zelURL=", "--redirectURL=", "--redirectType3URL=", "--productName=",
                                   "--type3WindowTitle=", "--timeout=", "--json ", "--help "})
    EXPECT_THAT(outcome.output, HasSubstr(std::string("\n  ") + option));
}

TEST_F(AskTest, ASignalClosesTheWindow) {
  for (const char* const signal : {"TERM", "INT", "HUP"}) {
    makeWaitingWindow(std::string("kill -") + signal + " $first");
    EXPECT_EQ(ask("--json").output, "{\"code\":1,\"url\":null}\n") << signal;
    EXPECT_EQ(ask().status, 1) << signal;
    EXPECT_TRUE(fs::remove(folder / "closed")) << signal;
  }
}

// Ctrl+C reaches every process of the terminal, also a window that cannot write its message yet.
TEST_F(AskTest, ASignalMayEndTheWindowFirst) {
  makeWindow(std::string(kFindProcesses) +
             "(until grep -q 'State:.Z' /proc/$$/status; do sleep 0.01; done; kill -CONT $second) &\n"
             "kill -STOP $second; kill -INT $second; kill -KILL $$\n");
  EXPECT_EQ(ask("--json").output, "{\"code\":1,\"url\":null}\n");
}

TEST_F(AskTest, BlockedAndIgnoredSignalsDoNotMatter) {
  makeWaitingWindow("grep SigBlk /proc/self/status >\"$here/signals\"; kill -TERM $first");
  const std::string setting = "env --block-signal=TERM --ignore-signal=CHLD --ignore-signal=PIPE ";
  EXPECT_EQ(run(setting + command()).status, 1);
  EXPECT_TRUE(windowWasClosed());
  EXPECT_THAT(support::linesOf(folder / "signals"), ElementsAre("SigBlk:\t0000000000000000"));
}

// `run` returns when no process has its standard error open.
TEST_F(AskTest, TheWindowClosesWithTheFirstProcess) {
  makeWaitingWindow("kill -KILL $first");
  run(command());
  EXPECT_TRUE(windowWasClosed());
}

TEST_F(AskTest, TheWindowClosesWithTheSecondProcess) {
  makeWaitingWindow("kill -KILL $second");
  EXPECT_EQ(ask("--json").output, "svo-signin-ask: ended by signal 9\n{\"code\":3,\"url\":null}\n");
  EXPECT_TRUE(windowWasClosed());
}

TEST_F(AskTest, TheTimeoutClosesTheWindow) {
  makeWaitingWindow("");
  EXPECT_EQ(ask("--timeout=1 --json").output, "{\"code\":1,\"url\":null}\n");
  EXPECT_TRUE(windowWasClosed());
}

TEST_F(AskTest, KillsAWindowThatDoesNotClose) {
  makeWindow(std::string(kFindProcesses) + "trap '' TERM; kill -TERM $first; exec sleep 1000\n");
  EXPECT_EQ(ask().status, 1);
}

TEST_F(AskTest, AReaderThatLeavesClosesTheWindow) {
  ASSERT_EQ(::mkfifo((folder / "started").c_str(), 0600), 0);
  makeWaitingWindow("echo >\"$here/started\"");
  const std::string reader = "read -r line <'" + (folder / "started") + "'";
  EXPECT_EQ(run("{ { " + command(std::string(kAddresses) + "--json") + "; echo $? >&2; } | " + reader + "; }").output,
            "svo-signin-ask: standard output: Broken pipe\n1\n");
  EXPECT_TRUE(windowWasClosed());
}

TEST_F(AskTest, ReportsAResultThatCannotBePrinted) {
  makeWindowThatWrites("<result><URL>h</URL></result>");
  EXPECT_EQ(run("{ " + command() + " >/dev/full; }").output,
            "svo-signin-ask: standard output: No space left on device\n");
  EXPECT_EQ(run("{ " + command() + " >/dev/full; }").status, 3);
  EXPECT_EQ(run("{ " + command() + " >&-; }").output, "svo-signin-ask: standard output: Bad file descriptor\n");
}

TEST_F(AskTest, PutsThePipeWhereThatIsPossible) {
  makeWindow("echo -n \"<result><URL>$pipe</URL></result>\" >\"$pipe\"\n");
  const std::string program = (folder / "bin/svo-signin-ask") + kAddresses;
  EXPECT_THAT(run("env -u TMPDIR XDG_RUNTIME_DIR='" + (folder / "pipes") + "' " + program).output,
              StartsWith(folder / "pipes/"));
  EXPECT_THAT(run("env -u XDG_RUNTIME_DIR TMPDIR=/nowhere " + program).output, StartsWith("/tmp/svo-signin-ask."));
}

TEST_F(AskTest, AFullDiskIsAnError) {
  const int status = support::withOwnMounts([&] {
    fs::current_path(folder / "bin");
    if (::mount("full", "/tmp", "tmpfs", 0, "nr_inodes=1") != 0) return support::kImpossible;
    // The sources, and with them the suppressions of the thread sanitizer, may be in /tmp.
    const Outcome outcome =
        run(std::string("env -u TMPDIR -u XDG_RUNTIME_DIR -u TSAN_OPTIONS ./svo-signin-ask") + kAddresses);
    EXPECT_THAT(outcome.output, testing::ContainsRegex("^svo-signin-ask: /tmp/.*: No space left on device\n$"));
    return outcome.status;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "needs mount namespaces";
  EXPECT_EQ(status, 3);
}

}  // namespace
