#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "platform/UniqueFd.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Environment.h"
#include "tests/support/Files.h"
#include "tests/support/Output.h"

namespace {

using Lines = std::vector<std::string>;

// What a watcher was called with, and how the process that it waited for ended.
std::atomic<pid_t> watched{0};
std::atomic<int> watchedEnd{-1};

void* watch(void* process) {
  const auto id = static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process));
  ::pthread_detach(::pthread_self());
  int status = 0;
  const bool waited = ::waitpid(id, &status, 0) == id;
  watchedEnd = waited ? WEXITSTATUS(status) : -2;
  watched = id;
  return nullptr;
}

class CreateProcessTest : public nativeutils_test::LoggedTest {
 protected:
  CreateProcessTest() {
    watched = 0;
    watchedEnd = -1;
  }

  void TearDown() override {
    EXPECT_TRUE(support::comesTrue([] { return !support::hasChildren(); })) << "nothing is left of any process";
  }

  // A program of the test's that runs in the shell.
  std::string program(const std::string& script, const std::string& name = "program") const {
    const std::string path = folder / name;
    support::writeFile(path, "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(path, std::filesystem::perms(0755));
    return path;
  }

  // Runs it to its end; -1 when it was not started.
  long endOf(const std::string& path, const Lines& args = {}) {
    status = returnCode = 4711;
    const bool started = utilCreateProcessWithReturnCode(path, args, status, true, returnCode, false);
    EXPECT_EQ(status, 4711u);
    return started ? static_cast<long>(returnCode) : -1;
  }

  bool isDone() const {
    return support::comesTrue([&] { return std::filesystem::exists(folder / "done"); });
  }

  unsigned long status = 4711;
  unsigned long returnCode = 4711;
  const support::TemporaryFolder folder;
};

TEST_F(CreateProcessTest, WaitingGivesTheExitStatus) {
  EXPECT_EQ(endOf(program("exit 3")), 3);
  EXPECT_EQ(endOf(program("exit 0")), 0);
}

TEST_F(CreateProcessTest, WaitingForAProgramThatASignalEndsGivesTheSignal) {
  EXPECT_EQ(endOf(program("kill -9 $$")), 9);
}

TEST_F(CreateProcessTest, AnEndThatIsNotKnownIsMinusOneWithItsSign) {
  support::Child deaf([&] {
    ::signal(SIGCHLD, SIG_IGN);
    unsigned long code = 0;
    return utilCreateProcessWithReturnCode("/bin/true", {}, status, true, code, false) && code == ~0ul ? 0 : 1;
  });
  EXPECT_EQ(deaf.wait(), 0);
}

TEST_F(CreateProcessTest, WithoutWaitingItReturnsWhileTheProgramRuns) {
  ASSERT_EQ(::mkfifo((folder / "go").c_str(), 0600), 0);
  const std::string path = program("read line <go; touch done; exit 3");
  EXPECT_TRUE(utilCreateProcessWithReturnCode(path, {}, status, false, returnCode, true));
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(returnCode, 0u);
  EXPECT_FALSE(std::filesystem::exists(folder / "done"));
  support::writeFile(folder / "go", "go\n");
  EXPECT_TRUE(isDone());
}

TEST_F(CreateProcessTest, TheStartIsLoggedWithItsArguments) {
  const std::string path = program("exit 0");
  EXPECT_EQ(endOf(path, {"a b", "", "100%s"}), 0);
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + path, "DEBUG Launch Process With Arg 0 : a b",
                             "DEBUG Launch Process With Arg 1 : ", "DEBUG Launch Process With Arg 2 : 100%s",
                             "INFO Launch Process With Task "}));
}

TEST_F(CreateProcessTest, AnEmptyPathIsAnError) {
  EXPECT_EQ(endOf(""), -1);
  EXPECT_EQ(returnCode, 4711u);
  EXPECT_EQ(logged(), Lines{"ERROR CreateProcess failed. PathToProcess does not exist."});
}

TEST_F(CreateProcessTest, APathWhereNothingIsIsAnError) {
  EXPECT_EQ(endOf(folder / "none"), -1);
  EXPECT_EQ(logged(), Lines{"ERROR File doesnot exists at: '" + (folder / "none") + "'"});
  forget();
  ASSERT_EQ(::symlink("nowhere", (folder / "dangling").c_str()), 0);
  EXPECT_EQ(endOf(folder / "dangling"), -1);
  EXPECT_EQ(logged(), Lines{"ERROR File doesnot exists at: '" + (folder / "dangling") + "'"});
}

TEST_F(CreateProcessTest, WhatCannotBeStartedIsAnError) {
  support::writeFile(folder / "text", "exit 0\n");
  support::writeFile(folder / "script", "exit 0\n");
  std::filesystem::permissions(folder / "script", std::filesystem::perms(0755));
  for (const std::string& path : {folder.path(), folder / "text", folder / "script"}) {
    forget();
    EXPECT_EQ(endOf(path), -1) << path;
    EXPECT_EQ(returnCode, 4711u);
    EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + path, "INFO Launch Process With Task ",
                               "ERROR Launch Process With Task "}));
    EXPECT_FALSE(support::hasChildren());
  }
}

TEST_F(CreateProcessTest, OutputIsDiscardedByTheOneAndKeptByTheOther) {
  const std::string path = program("echo out; echo err >&2; touch '" + (folder / "done") + "'");
  EXPECT_EQ(support::outputOf([&] { EXPECT_EQ(endOf(path), 0); }), "");
  std::filesystem::remove(folder / "done");
  EXPECT_EQ(support::outputOf([&] {
              EXPECT_TRUE(utilCreateProcess(path, {}, false, nullptr));
              EXPECT_TRUE(isDone());
            }),
            "out\nerr\n");
}

TEST_F(CreateProcessTest, TheOneWorksInTheProgramsFolderAndTheOtherWhereThisProcessDoes) {
  const std::string path = program("pwd -P >'" + (folder / "where") + "'; touch '" + (folder / "done") + "'");
  EXPECT_EQ(endOf(path), 0);
  EXPECT_EQ(support::contentsOf(folder / "where"), std::filesystem::canonical(folder.path()).string() + "\n");
  std::filesystem::remove(folder / "done");
  EXPECT_TRUE(utilCreateProcess(path, {}, false, nullptr));
  EXPECT_TRUE(isDone());
  EXPECT_EQ(support::contentsOf(folder / "where"), std::filesystem::current_path().string() + "\n");
}

TEST_F(CreateProcessTest, BothGiveThisProcessesInput) {
  ASSERT_EQ(::mkfifo((folder / "in").c_str(), 0600), 0);
  const platform::UniqueFd in(::open((folder / "in").c_str(), O_RDWR | O_CLOEXEC)), former(::dup(STDIN_FILENO));
  ::dup2(in.get(), STDIN_FILENO);
  ASSERT_EQ(::write(in.get(), "7\n9\n", 4), 4);
  EXPECT_EQ(endOf(program("read number; exit $number")), 7);
  EXPECT_TRUE(utilCreateProcess(program("read number; echo $number >'" + (folder / "done") + "'"), {}, false, nullptr));
  EXPECT_TRUE(support::comesTrue([&] { return support::contentsOf(folder / "done") == "9\n"; }));
  ::dup2(former.get(), STDIN_FILENO);
}

TEST_F(CreateProcessTest, ANewProcessIsLoggedWithItsArguments) {
  const std::string path = program("touch '" + (folder / "done") + "'");
  EXPECT_TRUE(utilCreateProcess(path, {"a b"}, false, nullptr));
  EXPECT_TRUE(isDone());
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + path, "DEBUG Launch Process With Arg 0 : a b",
                             "INFO Launch Process With Task "}));
}

TEST_F(CreateProcessTest, ANewProcessFromAnEmptyPathOrFromNothingFailsWithoutAMessage) {
  EXPECT_FALSE(utilCreateProcess("", {}, true, watch));
  EXPECT_FALSE(utilCreateProcess(folder / "none", {}, true, watch));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, ANewProcessFromAFolderFails) {
  EXPECT_FALSE(utilCreateProcess(folder.path(), {}, false, watch));
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + folder.path(), "INFO Launch Process With Task "}));
  EXPECT_EQ(watched, 0);
}

TEST_F(CreateProcessTest, AWatcherHasTheProcessToItselfAndWaitsForIt) {
  EXPECT_TRUE(utilCreateProcess(program("exit 6"), {}, false, watch));
  EXPECT_TRUE(support::comesTrue([] { return watched != 0; }));
  EXPECT_EQ(watchedEnd, 6);
}

TEST_F(CreateProcessTest, WithoutADisplayAProcessIsNotBroughtToTheFrontAndThatIsSaidAtOnce) {
  const support::Variable none("DISPLAY", std::nullopt);
  const std::string path = program("exit 0");
  EXPECT_TRUE(utilCreateProcess(path, {}, true, watch));
  const Lines lines = logged();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[2].rfind("INFO Launching process .... ", 0), 0u) << lines[2];
  EXPECT_EQ(lines[3], "WARN Failed bring front... took much time to Launch Process " + path);
  EXPECT_EQ(watched, 0) << "a process that is brought to the front has no watcher";
}

TEST_F(CreateProcessTest, AnApplicationIsLaunchedWithoutArgumentsAndWithoutAMessage) {
  EXPECT_TRUE(utilLaunchApplication(program("echo $# >'" + (folder / "done") + "'")));
  EXPECT_TRUE(support::comesTrue([&] { return support::contentsOf(folder / "done") == "0\n"; }));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, AnApplicationSharesFolderAndOutput) {
  const std::string path = program("pwd -P; echo err >&2; touch '" + (folder / "done") + "'");
  EXPECT_EQ(support::outputOf([&] {
              EXPECT_TRUE(utilLaunchApplication(path));
              EXPECT_TRUE(isDone());
            }),
            std::filesystem::current_path().string() + "\nerr\n");
}

TEST_F(CreateProcessTest, AnApplicationThatIsNoneIsNotLaunched) {
  EXPECT_FALSE(utilLaunchApplication(""));
  EXPECT_FALSE(utilLaunchApplication(folder / "none"));
  EXPECT_FALSE(utilLaunchApplication(folder.path()));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, AUrlIsOpenedInTheProgramThatHandlesItsScheme) {
  const support::Variable data("XDG_DATA_HOME", folder.path()), display("DISPLAY", ":98");
  std::filesystem::create_directory(folder / "applications");
  const std::string handler = program("printf %s \"$1\" >'" + (folder / "done") + "'");
  support::writeFile(folder / "applications/handler.desktop", "[Desktop Entry]\nType=Application\nName=Test\nExec=" +
                                                                  handler + " %u\nMimeType=x-scheme-handler/svo;\n");
  support::writeFile(folder / "applications/mimeapps.list",
                     "[Default Applications]\nx-scheme-handler/svo=handler.desktop\n");
  EXPECT_TRUE(utilOpenURL("svo:a%20b"));
  EXPECT_TRUE(support::comesTrue([&] { return support::contentsOf(folder / "done") == "svo:a%20b"; }));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, ATextThatIsNoUrlIsNotOpened) {
  EXPECT_FALSE(utilOpenURL(""));
  EXPECT_FALSE(utilOpenURL("http://example.com/a b"));
  EXPECT_FALSE(utilOpenURL("not a url"));
  EXPECT_EQ(logged(), Lines{});
}

}  // namespace
