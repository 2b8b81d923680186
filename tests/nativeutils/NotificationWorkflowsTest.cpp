// Closing the notifier's workflows. The run loop is a fake whose time advances without waiting.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "applog/OVNSemaphoreLock.h"
#include "nativeutils/NativeUtils.h"
#include "platform/UniqueFd.h"
#include "tests/nativeutils/FakeDesktop.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/OwnProcesses.h"
#include "tests/support/Semaphores.h"

namespace {

bool memoryIsExhausted = false;

}  // namespace

// Replaces the operator of the standard library.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return memoryIsExhausted ? nullptr : ::operator new(size);
}

namespace {

using namespace std::chrono_literals;
using nativeutils_test::FakeDesktop;
using nativeutils_test::fakeDesktop;
using Lines = std::vector<std::string>;

constexpr int kLockNumber = 77445459;
constexpr const char* kNotifierName = "Vorm Updates Notifier";

// A process that holds a slot of the lock. Runs `command` or, if that is empty, waits until `release` is called.
class Workflow {
 public:
  explicit Workflow(const std::vector<std::string>& command = {}) {
    int readyPipe[2], releasePipe[2];
    if (::pipe2(readyPipe, O_CLOEXEC) != 0 || ::pipe(releasePipe) != 0) throw std::runtime_error("no pipe");
    process_ = std::make_unique<support::Child>([&] {
      ::close(releasePipe[1]);
      OVNSemaphoreLock lock(kLockNumber, 255, SystemLock);
      const bool held = lock.AcquireLock();
      if (::write(readyPipe[1], "+", held ? 1 : 0) < 0) return 3;
      if (!command.empty()) return run(command);
      ::close(readyPipe[1]);
      char byte = 0;
      if (::read(releasePipe[0], &byte, 1) != 1) return 2;
      return lock.releaseLock() ? 0 : 1;
    });
    ::close(readyPipe[1]);
    ::close(releasePipe[0]);
    const platform::UniqueFd readyEnd(readyPipe[0]);
    releaseEnd_.reset(releasePipe[1]);
    char plus = 0;
    // The pipe is closed when the command has been started.
    if (::read(readyEnd.get(), &plus, 1) != 1 || ::read(readyEnd.get(), &plus, 1) != 0)
      throw std::runtime_error("no slot");
  }

  // Makes the process release its slot and end. Returns its exit status.
  int release() {
    if (::write(releaseEnd_.get(), ".", 1) != 1) return -1;
    return process_->wait();
  }

  // Returns the exit status; 128 + 9 if the process was killed.
  int wait() const { return process_->wait(); }

 private:
  static int run(const std::vector<std::string>& command) {
    std::vector<std::string> texts = command;
    std::vector<char*> arguments;
    for (std::string& text : texts)
      arguments.push_back(text.data());
    arguments.push_back(nullptr);
    ::execv(arguments[0], arguments.data());
    return 127;
  }

  platform::UniqueFd releaseEnd_;
  std::unique_ptr<support::Child> process_;
};

class NotificationWorkflowsTest : public nativeutils_test::LoggedTest {
 protected:
  NotificationWorkflowsTest() { fakeDesktop = FakeDesktop{}; }

  // Copies `program` to a folder with the notifier's name.
  std::string makeNotifier(const std::string& program) const {
    std::filesystem::create_directory(folder / kNotifierName);
    std::filesystem::copy(program, folder / kNotifierName + "/copy");
    return folder / kNotifierName + "/copy";
  }

  // Runs `body` in a process namespace of its own, so that it cannot kill other processes of the machine.
  static void inOwnNamespace(const std::function<int()>& body) {
    const int result = support::withOwnProcesses(body);
    if (result == support::kImpossible) GTEST_SKIP() << "no permission to create a process namespace";
    EXPECT_EQ(result, 0);
  }

  const std::string killing = "WARN Error Failed to close Notification Workflows. Trying to kill update notifier.";
  const std::string failed = "WARN Error Failed to kill update notifier.";
  const support::SetRemover remover{"/tmp", kLockNumber};
  const support::TemporaryFolder folder;
};

TEST_F(NotificationWorkflowsTest, SucceedsAtOnceWithoutWorkflows) {
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  EXPECT_TRUE(fakeDesktop.posted.empty());
  EXPECT_TRUE(fakeDesktop.intervals.empty());
  EXPECT_EQ(logged(), Lines{});
  EXPECT_EQ(support::setOf("/tmp", kLockNumber), -1) << "the function must not create the lock";
}

TEST_F(NotificationWorkflowsTest, PostsOneNotification) {
  Workflow workflow;
  fakeDesktop.onPost = [&] { EXPECT_EQ(workflow.release(), 0); };
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  const std::string object = "com.orvane.orvane_application_manager.VormNotifier";
  EXPECT_EQ(fakeDesktop.posted,
            (std::vector<std::pair<std::string, std::string>>{{object + ".TerminateInstance_Notification", object}}));
  EXPECT_TRUE(fakeDesktop.intervals.empty());
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(NotificationWorkflowsTest, WaitsThirtySecondsBeforeKilling) {
  Workflow workflow;
  fakeDesktop.onInterval = [&](std::size_t count) {
    if (count == 60) workflow.release();
  };
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  EXPECT_EQ(fakeDesktop.intervals, std::vector<std::chrono::milliseconds>(60, 500ms));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(NotificationWorkflowsTest, WaitsForAllWorkflows) {
  Workflow first, second;
  fakeDesktop.onPost = [&] { first.release(); };
  fakeDesktop.onInterval = [&](std::size_t count) {
    if (count == 5) second.release();
  };
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  EXPECT_EQ(fakeDesktop.intervals.size(), 5u);
}

TEST_F(NotificationWorkflowsTest, FailsWithoutMemoryForTheLock) {
  memoryIsExhausted = true;
  EXPECT_FALSE(utilCloseAllNotificationWorkflows());
  memoryIsExhausted = false;
  EXPECT_TRUE(fakeDesktop.posted.empty());
  EXPECT_EQ(logged(), Lines{"FATAL Error Failed to Create GlobalNonDeploymentWorkflowLock Object ..."});
}

TEST_F(NotificationWorkflowsTest, KillsOnlyTheNotifier) {
  const std::string program = makeNotifier("/bin/sleep");
  inOwnNamespace([&] {
    const Workflow workflow({program, "1000"});
    int status = 0;
    fakeDesktop.onInterval = [&](std::size_t count) {
      if (count == 61) status = workflow.wait();
    };
    support::Child other([&] { return ::execl("/bin/sleep", kNotifierName, "1000", nullptr); });
    if (!utilCloseAllNotificationWorkflows()) return 1;
    if (status == 0) status = workflow.wait();
    if (status != 128 + SIGKILL) return 2;
    return ::kill(other.id(), 0) == 0 && ::waitpid(other.id(), nullptr, WNOHANG) == 0 ? 0 : 3;
  });
  if (IsSkipped()) return;
  EXPECT_EQ(logged(), Lines{killing});
}

TEST_F(NotificationWorkflowsTest, WaitsTwoSecondsAfterKilling) {
  inOwnNamespace([&] {
    Workflow workflow;
    fakeDesktop.onInterval = [&](std::size_t count) {
      if (count == 64) workflow.release();
    };
    return utilCloseAllNotificationWorkflows() && fakeDesktop.intervals.size() == 64 ? 0 : 1;
  });
  if (IsSkipped()) return;
  EXPECT_EQ(logged(), Lines{killing});
}

TEST_F(NotificationWorkflowsTest, FailsIfAnotherProgramHoldsASlot) {
  inOwnNamespace([&] {
    Workflow workflow;
    if (utilCloseAllNotificationWorkflows() || fakeDesktop.intervals.size() != 64) return 1;
    return workflow.release();
  });
  if (IsSkipped()) return;
  EXPECT_EQ(logged(), (Lines{killing, failed}));
}

TEST_F(NotificationWorkflowsTest, DoesNotKillItsOwnProcess) {
  const std::string program = makeNotifier("/proc/self/exe");
  inOwnNamespace([&] {
    Workflow workflow;
    support::Child self([&] {
      return ::execl(program.c_str(), program.c_str(), "--gtest_also_run_disabled_tests", "--gtest_brief=1",
                     "--gtest_filter=*DISABLED_FailsWithAWorkflow", nullptr);
    });
    const int result = self.wait();
    workflow.release();
    return result;
  });
}

// Run by the previous test as a separate program.
TEST_F(NotificationWorkflowsTest, DISABLED_FailsWithAWorkflow) {
  EXPECT_FALSE(utilCloseAllNotificationWorkflows());
}

}  // namespace
