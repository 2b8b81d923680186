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
#include <optional>
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

// The process id that the watcher received, and the exit status of that process.
std::atomic<pid_t> watchedProcess{0};
std::atomic<int> watchedStatus{-1};

void* watch(void* process) {
  const auto id = static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process));
  ::pthread_detach(::pthread_self());
  int status = 0;
  const bool waited = ::waitpid(id, &status, 0) == id;
  watchedStatus = waited ? WEXITSTATUS(status) : -2;
  watchedProcess = id;
  return nullptr;
}

class CreateProcessTest : public nativeutils_test::LoggedTest {
 protected:
  CreateProcessTest() {
    watchedProcess = 0;
    watchedStatus = -1;
  }

  void TearDown() override {
    EXPECT_TRUE(support::becomesTrue([] { return !support::hasChildren(); })) << "a child or a zombie remains";
  }

  // Creates an executable shell script.
  std::string program(const std::string& script, const std::string& name = "program") const {
    const std::string path = folder / name;
    support::writeFile(path, "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(path, std::filesystem::perms(0755));
    return path;
  }

  // Runs a program to its end. Returns its exit status; -1 if it was not started.
  long statusOf(const std::string& path, const Lines& args = {}) {
    status = returnCode = 4711;
    const bool started = utilCreateProcessWithReturnCode(path, args, status, true, returnCode, false);
    EXPECT_EQ(status, 4711u);
    return started ? static_cast<long>(returnCode) : -1;
  }

  bool becomesDone() const {
    return support::becomesTrue([&] { return std::filesystem::exists(folder / "done"); });
  }

  unsigned long status = 4711;
  unsigned long returnCode = 4711;
  const support::TemporaryFolder folder;
};

TEST_F(CreateProcessTest, ReturnsTheExitStatus) {
  EXPECT_EQ(statusOf(program("exit 3")), 3);
  EXPECT_EQ(statusOf(program("exit 0")), 0);
}

TEST_F(CreateProcessTest, ReturnsTheNumberOfTheSignal) {
  EXPECT_EQ(statusOf(program("kill -9 $$")), 9);
}

TEST_F(CreateProcessTest, ReturnsMinusOneForAnUnknownStatus) {
  support::Child child([&] {
    ::signal(SIGCHLD, SIG_IGN);
    unsigned long code = 0;
    return utilCreateProcessWithReturnCode("/bin/true", {}, status, true, code, false) && code == ~0ul ? 0 : 1;
  });
  EXPECT_EQ(child.wait(), 0);
}

TEST_F(CreateProcessTest, ReturnsWhileTheProgramRuns) {
  ASSERT_EQ(::mkfifo((folder / "go").c_str(), 0600), 0);
  const std::string path = program("read line <go; touch done; exit 3");
  EXPECT_TRUE(utilCreateProcessWithReturnCode(path, {}, status, false, returnCode, true));
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(returnCode, 0u);
  EXPECT_FALSE(std::filesystem::exists(folder / "done"));
  support::writeFile(folder / "go", "go\n");
  EXPECT_TRUE(becomesDone());
}

TEST_F(CreateProcessTest, LogsTheArguments) {
  const std::string path = program("exit 0");
  EXPECT_EQ(statusOf(path, {"a b", "", "100%s"}), 0);
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + path, "DEBUG Launch Process With Arg 0 : a b",
                             "DEBUG Launch Process With Arg 1 : ", "DEBUG Launch Process With Arg 2 : 100%s",
                             "INFO Launch Process With Task "}));
}

TEST_F(CreateProcessTest, LogsAnEmptyPath) {
  EXPECT_EQ(statusOf(""), -1);
  EXPECT_EQ(returnCode, 4711u);
  EXPECT_EQ(logged(), Lines{"ERROR CreateProcess failed. PathToProcess does not exist."});
}

TEST_F(CreateProcessTest, LogsAMissingFile) {
  EXPECT_EQ(statusOf(folder / "none"), -1);
  EXPECT_EQ(logged(), Lines{"ERROR File doesnot exists at: '" + (folder / "none") + "'"});
  forget();
  ASSERT_EQ(::symlink("nowhere", (folder / "dangling").c_str()), 0);
  EXPECT_EQ(statusOf(folder / "dangling"), -1);
  EXPECT_EQ(logged(), Lines{"ERROR File doesnot exists at: '" + (folder / "dangling") + "'"});
}

TEST_F(CreateProcessTest, LogsAProgramThatCannotBeStarted) {
  support::writeFile(folder / "text", "exit 0\n");
  support::writeFile(folder / "script", "exit 0\n");
  std::filesystem::permissions(folder / "script", std::filesystem::perms(0755));
  for (const std::string& path : {folder.path(), folder / "text", folder / "script"}) {
    forget();
    EXPECT_EQ(statusOf(path), -1) << path;
    EXPECT_EQ(returnCode, 4711u);
    EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + path, "INFO Launch Process With Task ",
                               "ERROR Launch Process With Task "}));
    EXPECT_FALSE(support::hasChildren());
  }
}

TEST_F(CreateProcessTest, OnlyTheFunctionWithReturnCodeDiscardsOutput) {
  const std::string path = program("echo out; echo err >&2; touch '" + (folder / "done") + "'");
  EXPECT_EQ(support::outputOf([&] { EXPECT_EQ(statusOf(path), 0); }), "");
  std::filesystem::remove(folder / "done");
  EXPECT_EQ(support::outputOf([&] {
              EXPECT_TRUE(utilCreateProcess(path, {}, false, nullptr));
              EXPECT_TRUE(becomesDone());
            }),
            "out\nerr\n");
}

TEST_F(CreateProcessTest, OnlyTheFunctionWithReturnCodeChangesFolder) {
  const std::string path = program("pwd -P >'" + (folder / "where") + "'; touch '" + (folder / "done") + "'");
  EXPECT_EQ(statusOf(path), 0);
  EXPECT_EQ(support::contentsOf(folder / "where"), std::filesystem::canonical(folder.path()).string() + "\n");
  std::filesystem::remove(folder / "done");
  EXPECT_TRUE(utilCreateProcess(path, {}, false, nullptr));
  EXPECT_TRUE(becomesDone());
  EXPECT_EQ(support::contentsOf(folder / "where"), std::filesystem::current_path().string() + "\n");
}

TEST_F(CreateProcessTest, BothFunctionsPassStandardInput) {
  ASSERT_EQ(::mkfifo((folder / "in").c_str(), 0600), 0);
  const platform::UniqueFd in(::open((folder / "in").c_str(), O_RDWR | O_CLOEXEC)), previous(::dup(STDIN_FILENO));
  ::dup2(in.get(), STDIN_FILENO);
  ASSERT_EQ(::write(in.get(), "7\n9\n", 4), 4);
  EXPECT_EQ(statusOf(program("read number; exit $number")), 7);
  EXPECT_TRUE(utilCreateProcess(program("read number; echo $number >'" + (folder / "done") + "'"), {}, false, nullptr));
  EXPECT_TRUE(support::becomesTrue([&] { return support::contentsOf(folder / "done") == "9\n"; }));
  ::dup2(previous.get(), STDIN_FILENO);
}

TEST_F(CreateProcessTest, CreateLogsTheArguments) {
  const std::string path = program("touch '" + (folder / "done") + "'");
  EXPECT_TRUE(utilCreateProcess(path, {"a b"}, false, nullptr));
  EXPECT_TRUE(becomesDone());
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + path, "DEBUG Launch Process With Arg 0 : a b",
                             "INFO Launch Process With Task "}));
}

TEST_F(CreateProcessTest, CreateFailsSilentlyWithoutAProgram) {
  EXPECT_FALSE(utilCreateProcess("", {}, true, watch));
  EXPECT_FALSE(utilCreateProcess(folder / "none", {}, true, watch));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, CreateFailsForAFolder) {
  EXPECT_FALSE(utilCreateProcess(folder.path(), {}, false, watch));
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path " + folder.path(), "INFO Launch Process With Task "}));
  EXPECT_EQ(watchedProcess, 0);
}

TEST_F(CreateProcessTest, OnlyTheWatcherWaitsForTheProcess) {
  EXPECT_TRUE(utilCreateProcess(program("exit 6"), {}, false, watch));
  EXPECT_TRUE(support::becomesTrue([] { return watchedProcess != 0; }));
  EXPECT_EQ(watchedStatus, 6);
}

TEST_F(CreateProcessTest, WarnsAtOnceWithoutADisplay) {
  const support::Variable noDisplay("DISPLAY", std::nullopt);
  const std::string path = program("exit 0");
  EXPECT_TRUE(utilCreateProcess(path, {}, true, watch));
  const Lines lines = logged();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[2].rfind("INFO Launching process .... ", 0), 0u) << lines[2];
  EXPECT_EQ(lines[3], "WARN Failed bring front... took much time to Launch Process " + path);
  EXPECT_EQ(watchedProcess, 0) << "no watcher if the window is raised";
}

TEST_F(CreateProcessTest, LaunchPassesNoArgumentsAndLogsNothing) {
  EXPECT_TRUE(utilLaunchApplication(program("echo $# >'" + (folder / "done") + "'")));
  EXPECT_TRUE(support::becomesTrue([&] { return support::contentsOf(folder / "done") == "0\n"; }));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, LaunchKeepsFolderAndOutput) {
  const std::string path = program("pwd -P; echo err >&2; touch '" + (folder / "done") + "'");
  EXPECT_EQ(support::outputOf([&] {
              EXPECT_TRUE(utilLaunchApplication(path));
              EXPECT_TRUE(becomesDone());
            }),
            std::filesystem::current_path().string() + "\nerr\n");
}

TEST_F(CreateProcessTest, LaunchFailsWithoutAProgram) {
  EXPECT_FALSE(utilLaunchApplication(""));
  EXPECT_FALSE(utilLaunchApplication(folder / "none"));
  EXPECT_FALSE(utilLaunchApplication(folder.path()));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, OpensAUrlInItsDefaultProgram) {
  const support::Variable data("XDG_DATA_HOME", folder.path()), display("DISPLAY", ":98");
  std::filesystem::create_directory(folder / "applications");
  const std::string handler = program("printf %s \"$1\" >'" + (folder / "done") + "'");
  support::writeFile(folder / "applications/handler.desktop", "[Desktop Entry]\nType=Application\nName=Test\nExec=" +
                                                                  handler + " %u\nMimeType=x-scheme-handler/svo;\n");
  support::writeFile(folder / "applications/mimeapps.list",
                     "[Default Applications]\nx-scheme-handler/svo=handler.desktop\n");
  EXPECT_TRUE(utilOpenURL("svo:a%20b"));
  EXPECT_TRUE(support::becomesTrue([&] { return support::contentsOf(folder / "done") == "svo:a%20b"; }));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(CreateProcessTest, DoesNotOpenAnInvalidUrl) {
  EXPECT_FALSE(utilOpenURL(""));
  EXPECT_FALSE(utilOpenURL("http://example.com/a b"));
  EXPECT_FALSE(utilOpenURL("not a url"));
  EXPECT_EQ(logged(), Lines{});
}

}  // namespace
