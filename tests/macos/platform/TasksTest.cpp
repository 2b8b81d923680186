#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/Processes.h"
#include "tests/macos/platform/PlatformTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Output.h"

namespace {

using platform::runTask;
using platform::startTask;
using platform::Task;

class TasksTest : public macos_test::PlatformTest {
 protected:
  void TearDown() override { EXPECT_TRUE(macos_test::waitForTasks()); }

  static Task shell(const std::string& script) {
    Task task;
    task.program = "/bin/sh";
    task.arguments = {"-c", script};
    return task;
  }

  static std::size_t openFiles() { return support::namesIn("/proc/self/fd").size(); }

  const support::TemporaryFolder folder;
};

TEST_F(TasksTest, OutputIsDiscardedIfSilent) {
  Task task = shell("echo out; echo err >&2");
  EXPECT_EQ(support::outputOf([&] { EXPECT_EQ(runTask(task), 0); }), "out\nerr\n");
  task.silent = true;
  EXPECT_EQ(support::outputOf([&] { EXPECT_EQ(runTask(task), 0); }), "");
}

TEST_F(TasksTest, ASignalsNumberIsTheExitStatus) {
  EXPECT_EQ(runTask(shell("kill -TERM $$")), SIGTERM);
}

TEST_F(TasksTest, ArgumentsArriveUnchanged) {
  Task task = shell("printf '%s|' \"$0\" \"$@\" >'" + (folder / "seen") + "'");
  task.arguments.insert(task.arguments.end(), {"a b", "", "\"'$HOME*\n", "\xC3\xA4\xF0\x9F\x98\x80"});
  EXPECT_EQ(runTask(task), 0);
  EXPECT_EQ(support::contentsOf(folder / "seen"), "a b||\"'$HOME*\n|\xC3\xA4\xF0\x9F\x98\x80|");
}

TEST_F(TasksTest, AnArgumentEndsAtItsFirstNul) {
  Task task = shell("printf '%s' \"$0\" >'" + (folder / "seen") + "'");
  task.arguments.push_back(std::string("a\0\xFF", 3));
  EXPECT_EQ(runTask(task), 0);
  EXPECT_EQ(support::contentsOf(folder / "seen"), "a");
}

TEST_F(TasksTest, AnArgumentThatIsNotUtf8IsRejected) {
  Task task = shell("exit 0");
  task.arguments.push_back("\xFF");
  EXPECT_FALSE(runTask(task));
  EXPECT_EQ(errno, EILSEQ);
  EXPECT_FALSE(support::hasChildren());
}

TEST_F(TasksTest, RunsInTheGivenFolder) {
  Task task = shell("pwd -P >seen");
  task.folder = folder.path();
  EXPECT_EQ(runTask(task), 0);
  EXPECT_EQ(support::contentsOf(folder / "seen"), std::filesystem::canonical(folder.path()).string() + "\n");
}

TEST_F(TasksTest, ARelativeProgramStartsInTheCallersFolder) {
  ASSERT_EQ(::mkdir((folder / "sub").c_str(), 0755), 0);
  support::writeFile(folder / "sub/script", "#!/bin/sh\nexit 7\n");
  ASSERT_EQ(::chmod((folder / "sub/script").c_str(), 0755), 0);
  const auto previous = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  Task task;
  task.program = "sub/script";
  task.folder = "sub";
  EXPECT_EQ(runTask(task), 7);
  std::filesystem::current_path(previous);
}

TEST_F(TasksTest, AnInvalidTaskIsNotStarted) {
  support::writeFile(folder / "text", "exit 0\n");
  support::writeFile(folder / "script", "exit 0\n");
  ASSERT_EQ(::chmod((folder / "script").c_str(), 0755), 0);
  const auto errorOf = [](const std::string& program, const std::string& workingFolder = "") {
    Task task;
    task.program = program;
    task.folder = workingFolder;
    errno = 0;
    EXPECT_FALSE(startTask(task)) << program;
    return errno;
  };
  EXPECT_EQ(errorOf(folder / "text"), EACCES);
  EXPECT_EQ(errorOf(folder / "script"), ENOEXEC);
  EXPECT_EQ(errorOf(folder.path()), EACCES);
  EXPECT_EQ(errorOf(folder / "none"), ENOENT);
  EXPECT_EQ(errorOf("true"), ENOENT);
  EXPECT_EQ(errorOf("/bin/true", folder / "none"), ENOENT);
  EXPECT_EQ(errorOf("/bin/\xFF"), EILSEQ);
  EXPECT_EQ(errorOf("/bin/true", folder / "\xFF"), EILSEQ);
  EXPECT_EQ(errorOf(std::string("/no/such\0\xFF", 10)), ENOENT);
  EXPECT_FALSE(support::hasChildren());
}

TEST_F(TasksTest, NothingIsStartedIfOutOfMemory) {
  doubles::failCall("NSTask init");
  Task task = shell("exit 0");
  EXPECT_FALSE(runTask(task));
  task.silent = true;
  EXPECT_FALSE(runTask(task));
  EXPECT_FALSE(startTask(task));
  EXPECT_FALSE(support::hasChildren());
}

TEST_F(TasksTest, AnUnknownExitStatusIsMinusOne) {
  doubles::failCall("waitUntilExit");
  EXPECT_EQ(runTask(shell("exit 3")), -1);
}

TEST_F(TasksTest, ManyTasksLeaveNoProcessesOrDescriptors) {
  Task task = shell("exit 1");
  task.silent = true;
  EXPECT_EQ(runTask(task), 1);
  const std::size_t before = openFiles();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(runTask(task), 1);
    const auto process = startTask(task);
    ASSERT_TRUE(process);
    platform::waitForTaskInBackground(*process);
  }
  EXPECT_TRUE(macos_test::waitForTasks());
  EXPECT_TRUE(support::becomesTrue([&] { return openFiles() <= before; }));
}

TEST_F(TasksTest, ConcurrentTasksReportTheirOwnExitStatus) {
  std::atomic<int> correct{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int j = 0; j < 5; ++j) {
        if (runTask(shell("exit " + std::to_string(10 * i + j))) == 10 * i + j) ++correct;
        (void)startTask(shell("exit 1"));
      }
    });
  }
  for (std::thread& each : threads)
    each.join();
  EXPECT_EQ(correct, 20);
}

TEST_F(TasksTest, OtherChildrenAreNotCollected) {
  support::Child own([] { return 5; });
  EXPECT_EQ(runTask(shell("exit 0")), 0);
  EXPECT_EQ(own.wait(), 5);
}

}  // namespace
