#include "platform/Processes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <thread>

#include "platform/UniqueFd.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using platform::runTask;
using platform::startTask;
using platform::Task;

class ProcessesTest : public testing::Test {
 protected:
  // No child process is left after the background waits.
  void TearDown() override {
    EXPECT_TRUE(support::becomesTrue([] { return !support::hasChildren(); }));
  }

  static Task shell(const std::string& script) {
    Task task;
    task.program = "/bin/sh";
    task.arguments = {"-c", script};
    return task;
  }

  static int endOf(const Task& task) {
    const auto end = runTask(task);
    EXPECT_TRUE(end) << std::strerror(errno);
    return end.value_or(-1);
  }

  static int endOf(const std::string& script) { return endOf(shell(script)); }

  // Expects the start to fail and returns its error.
  static int errorOf(const std::string& program, const std::string& folder = "") {
    Task task;
    task.program = program;
    task.folder = folder;
    EXPECT_FALSE(runTask(task));
    const int error = errno;
    EXPECT_FALSE(startTask(task));
    EXPECT_EQ(errno, error);
    return error;
  }

  static std::size_t openFiles() { return support::namesIn("/proc/self/fd").size(); }

  const support::TemporaryFolder folder;
};

TEST_F(ProcessesTest, ReturnsTheExitStatus) {
  EXPECT_EQ(endOf("exit 0"), 0);
  EXPECT_EQ(endOf("exit 3"), 3);
  EXPECT_EQ(endOf("exit 255"), 255);
}

TEST_F(ProcessesTest, ReturnsTheNumberOfAFatalSignal) {
  EXPECT_EQ(endOf("kill -TERM $$"), SIGTERM);
  EXPECT_EQ(endOf("kill -KILL $$"), SIGKILL);
}

TEST_F(ProcessesTest, ReturnsMinusOneWhenSigchldIsIgnored) {
  support::Child child([] {
    ::signal(SIGCHLD, SIG_IGN);
    return runTask(shell("exit 3")) == -1 ? 0 : 1;
  });
  EXPECT_EQ(child.wait(), 0);
}

TEST_F(ProcessesTest, PassesArgumentsUnchanged) {
  Task task = shell("printf '%s|' \"$0\" \"$@\" >'" + (folder / "seen") + "'");
  task.arguments.insert(task.arguments.end(), {"a b", "", "\"'$HOME*\n", "\xff"});
  EXPECT_EQ(endOf(task), 0);
  EXPECT_EQ(support::contentsOf(folder / "seen"), "a b||\"'$HOME*\n|\xff|");
}

TEST_F(ProcessesTest, RunsInTheGivenFolder) {
  Task task = shell("pwd -P >seen");
  task.folder = folder.path();
  EXPECT_EQ(endOf(task), 0);
  EXPECT_EQ(support::contentsOf(folder / "seen"), std::filesystem::canonical(folder.path()).string() + "\n");
}

TEST_F(ProcessesTest, ResolvesARelativeProgramInTheCallersFolder) {
  ASSERT_EQ(::mkdir((folder / "sub").c_str(), 0755), 0);
  support::writeFile(folder / "sub/script", "#!/bin/sh\nexit 7\n");
  ASSERT_EQ(::chmod((folder / "sub/script").c_str(), 0755), 0);
  const auto previous = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  Task task;
  task.program = "sub/script";
  task.folder = "sub";
  EXPECT_EQ(endOf(task), 7);
  std::filesystem::current_path(previous);
}

TEST_F(ProcessesTest, SilencesOutputAndErrorsButNotInput) {
  Task task =
      shell("[ /proc/$$/fd/1 -ef /dev/null ] && [ /proc/$$/fd/2 -ef /dev/null ] && ! [ /proc/$$/fd/0 -ef /dev/null ]");
  task.silent = true;
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const platform::UniqueFd in(ends[0]), out(ends[1]), previous(::dup(STDIN_FILENO));
  ::dup2(in.get(), STDIN_FILENO);
  EXPECT_EQ(endOf(task), 0);
  ::dup2(previous.get(), STDIN_FILENO);
}

TEST_F(ProcessesTest, PassesNoOtherDescriptor) {
  const platform::UniqueFd high(::fcntl(STDIN_FILENO, F_DUPFD, 200));
  const platform::UniqueFd low(::dup(STDIN_FILENO));
  ASSERT_TRUE(high && low);
  const auto test = [](int fd) { return "[ -e /proc/$$/fd/" + std::to_string(fd) + " ]"; };
  EXPECT_EQ(endOf("! " + test(high.get()) + " && ! " + test(low.get()) + " && " + test(2)), 0);
}

TEST_F(ProcessesTest, ResetsAndUnblocksSignals) {
  const auto previousAction = ::signal(SIGPIPE, SIG_IGN);
  sigset_t one, previousMask;
  ::sigemptyset(&one);
  ::sigaddset(&one, SIGUSR1);
  ::pthread_sigmask(SIG_BLOCK, &one, &previousMask);
  // `posix_spawn` ignores two internal signals of the C library.
  EXPECT_EQ(endOf("[ $(grep -cE '^Sig(Blk|Ign):\\s0+(180000000)?$' /proc/self/status) = 2 ]"), 0);
  ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
  ::signal(SIGPIPE, previousAction);
}

TEST_F(ProcessesTest, FailsForFilesThatAreNotPrograms) {
  support::writeFile(folder / "text", "exit 0\n");
  EXPECT_EQ(errorOf(folder / "text"), EACCES);
  ASSERT_EQ(::chmod((folder / "text").c_str(), 0755), 0);
  EXPECT_EQ(errorOf(folder / "text"), ENOEXEC) << "no shell is used";
  EXPECT_EQ(errorOf(folder.path()), EACCES);
  EXPECT_EQ(errorOf(folder / "none"), ENOENT);
  EXPECT_EQ(errorOf(""), ENOENT);
  EXPECT_EQ(errorOf("/bin/true", folder / "none"), ENOENT);
  EXPECT_EQ(errorOf("true"), ENOENT) << "no PATH is searched";
}

TEST_F(ProcessesTest, AFailedStartLeavesNoDescriptorOrProcess) {
  const std::size_t before = openFiles();
  for (int i = 0; i < 50; ++i) {
    errorOf(folder / "none");
    endOf("exit 0");
  }
  EXPECT_EQ(openFiles(), before);
  EXPECT_FALSE(support::hasChildren());
}

TEST_F(ProcessesTest, ASignalDoesNotEndTheWait) {
  if (!support::kSignalsInterrupt) GTEST_SKIP() << "signals are held back";
  support::Child waiting([] {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &action, nullptr);
    return endOf("kill -ALRM $PPID; kill -ALRM $PPID; exec sleep 0.1");
  });
  EXPECT_EQ(waiting.wait(), 0);
}

TEST_F(ProcessesTest, BackgroundWaitKeepsOtherChildren) {
  support::Child own([] { return 5; });
  for (int i = 0; i < 20; ++i) {
    const auto process = startTask(shell("exit 0"));
    ASSERT_TRUE(process);
    platform::waitForTaskInBackground(*process);
  }
  EXPECT_TRUE(support::becomesTrue([&] {
    siginfo_t ended{};
    return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid == own.id();
  }));
  EXPECT_EQ(own.wait(), 5);
}

TEST_F(ProcessesTest, IsThreadSafe) {
  std::atomic<int> correct{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int j = 0; j < 5; ++j) {
        if (endOf("exit " + std::to_string(10 * i + j)) == 10 * i + j) ++correct;
        if (const auto process = startTask(shell("exit 1"))) platform::waitForTaskInBackground(*process);
      }
    });
  }
  for (std::thread& each : threads)
    each.join();
  EXPECT_EQ(correct, 20);
}

TEST(ProcessListTest, ContainsThisProcessAndItsProgram) {
  const std::vector<pid_t> all = platform::allProcesses();
  EXPECT_NE(std::find(all.begin(), all.end(), ::getpid()), all.end());
  EXPECT_EQ(platform::programOf(::getpid()), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST(ProcessListTest, AnEndedProcessHasNoProgram) {
  support::Child brief([] { return 0; });
  const pid_t process = brief.id();
  brief.wait();
  EXPECT_EQ(platform::programOf(process), "");
}

// Waits until the arguments of a process begin with a text: they are empty until its program runs.
bool hasArguments(pid_t process, const std::string& beginning) {
  const std::string arguments = "/proc/" + std::to_string(process) + "/cmdline";
  return support::becomesTrue([&] { return support::contentsOf(arguments).rfind(beginning, 0) == 0; });
}

TEST(ProcessListTest, ReturnsTheFirstArgumentOfAnUnreadableProgram) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can change its user";
  Task task;
  task.program = "/bin/sleep";
  task.arguments = {"1000"};
  const auto process = startTask(task);
  ASSERT_TRUE(process);
  EXPECT_TRUE(hasArguments(*process, "/bin/sleep"));
  support::Child other([&] {
    if (::setresuid(65534, 65534, 65534) != 0) return 2;
    return platform::programOf(*process) == "/bin/sleep" ? 0 : 1;
  });
  EXPECT_EQ(other.wait(), 0);
  ::kill(*process, SIGKILL);
  ASSERT_EQ(::waitpid(*process, nullptr, 0), *process);
}

TEST(ProcessListTest, DoesNotTrustArgumentsWhenRoot) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root has capabilities";
  support::Child pretender([] {
    if (::setresuid(65534, 65534, 65534) != 0) return 2;
    return ::execl("/bin/sleep", "pretended", "1000", nullptr);
  });
  ASSERT_TRUE(hasArguments(pretender.id(), "pretended"));
  support::Child child([&] {
    if (!support::dropCapabilities()) return 2;
    return platform::programOf(pretender.id()).empty() ? 0 : 1;
  });
  EXPECT_EQ(child.wait(), 0);
}

}  // namespace
