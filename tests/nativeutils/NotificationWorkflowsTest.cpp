// How the notifier's workflows are closed, by the clock of a run loop that takes no time.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
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

bool memoryIsOut = false;

}  // namespace

// Takes the place of the standard library's.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return memoryIsOut ? nullptr : ::operator new(size);
}

namespace {

using namespace std::chrono_literals;
using nativeutils_test::FakeDesktop;
using nativeutils_test::fakeDesktop;
using Lines = std::vector<std::string>;

constexpr int kLock = 77445459;
constexpr const char* kProgram = "Vorm Updates Notifier";

// A process that holds a slot of the lock; runs `program` with it, or waits to be told to give it back.
class Workflow {
 public:
  explicit Workflow(const std::vector<std::string>& command = {}) {
    int ready[2], end[2];
    if (::pipe2(ready, O_CLOEXEC) != 0 || ::pipe(end) != 0) throw std::runtime_error("no pipe");
    process_ = std::make_unique<support::Child>([&] {
      ::close(end[1]);
      OVNSemaphoreLock lock(kLock, 255, SystemLock);
      const bool held = lock.AcquireLock();
      if (::write(ready[1], "+", held ? 1 : 0) < 0) return 3;
      if (!command.empty()) return run(command);
      ::close(ready[1]);
      char told = 0;
      if (::read(end[0], &told, 1) != 1) return 2;
      return lock.releaseLock() ? 0 : 1;
    });
    ::close(ready[1]);
    ::close(end[0]);
    const platform::UniqueFd isReady(ready[0]);
    end_.reset(end[1]);
    char plus = 0;
    // The end of the pipe tells that the program runs.
    if (::read(isReady.get(), &plus, 1) != 1 || ::read(isReady.get(), &plus, 1) != 0)
      throw std::runtime_error("no slot");
  }

  // Lets it give back its slot and end; its exit status.
  int release() {
    if (::write(end_.get(), ".", 1) != 1) return -1;
    return process_->wait();
  }

  // The end of one that was killed: 128 + 9.
  int wait() const { return process_->wait(); }

 private:
  static int run(const std::vector<std::string>& command) {
    std::vector<std::string> words = command;
    std::vector<char*> pointers;
    for (std::string& word : words)
      pointers.push_back(word.data());
    pointers.push_back(nullptr);
    ::execv(pointers[0], pointers.data());
    return 127;
  }

  platform::UniqueFd end_;
  std::unique_ptr<support::Child> process_;
};

class NotificationWorkflowsTest : public nativeutils_test::LoggedTest {
 protected:
  NotificationWorkflowsTest() { fakeDesktop = FakeDesktop{}; }

  // A copy of `program` in a folder whose name is the notifier's.
  std::string notifier(const std::string& program) const {
    std::filesystem::create_directory(folder / kProgram);
    std::filesystem::copy(program, folder / kProgram + "/copy");
    return folder / kProgram + "/copy";
  }

  // Whatever the body does with processes, no process of the machine's is killed.
  static void amongItself(const std::function<int()>& body) {
    const int result = support::withOwnProcesses(body);
    if (result == support::kImpossible) GTEST_SKIP() << "this process may not have processes of its own";
    EXPECT_EQ(result, 0);
  }

  const std::string trying = "WARN Error Failed to close Notification Workflows. Trying to kill update notifier.";
  const std::string failed = "WARN Error Failed to kill update notifier.";
  const support::SetRemover remover{"/tmp", kLock};
  const support::TemporaryFolder folder;
};

TEST_F(NotificationWorkflowsTest, WithNobodyRunningItIsTrueAtOnceAndNothingIsPosted) {
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  EXPECT_TRUE(fakeDesktop.posted.empty());
  EXPECT_TRUE(fakeDesktop.turns.empty());
  EXPECT_EQ(logged(), Lines{});
  EXPECT_EQ(support::setOf("/tmp", kLock), -1) << "the lock is only looked at";
}

TEST_F(NotificationWorkflowsTest, AWorkflowIsAskedOnceToEnd) {
  Workflow workflow;
  fakeDesktop.onPost = [&] { EXPECT_EQ(workflow.release(), 0); };
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  const std::string object = "com.orvane.orvane_application_manager.VormNotifier";
  EXPECT_EQ(fakeDesktop.posted,
            (std::vector<std::pair<std::string, std::string>>{{object + ".TerminateInstance_Notification", object}}));
  EXPECT_TRUE(fakeDesktop.turns.empty());
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(NotificationWorkflowsTest, AWorkflowThatEndsWithinThirtySecondsIsNotKilled) {
  Workflow workflow;
  fakeDesktop.duringTurn = [&](std::size_t turn) {
    if (turn == 60) workflow.release();
  };
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  EXPECT_EQ(fakeDesktop.turns, std::vector<std::chrono::milliseconds>(60, 500ms));
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(NotificationWorkflowsTest, AllWorkflowsHaveToEnd) {
  Workflow first, second;
  fakeDesktop.onPost = [&] { first.release(); };
  fakeDesktop.duringTurn = [&](std::size_t turn) {
    if (turn == 5) second.release();
  };
  EXPECT_TRUE(utilCloseAllNotificationWorkflows());
  EXPECT_EQ(fakeDesktop.turns.size(), 5u);
}

TEST_F(NotificationWorkflowsTest, WithoutMemoryForTheLockItFails) {
  memoryIsOut = true;
  EXPECT_FALSE(utilCloseAllNotificationWorkflows());
  memoryIsOut = false;
  EXPECT_TRUE(fakeDesktop.posted.empty());
  EXPECT_EQ(logged(), Lines{"FATAL Error Failed to Create GlobalNonDeploymentWorkflowLock Object ..."});
}

TEST_F(NotificationWorkflowsTest, AStubbornNotifierIsKilledAndNobodyElse) {
  const std::string program = notifier("/bin/sleep");
  amongItself([&] {
    const Workflow stubborn({program, "1000"});
    int end = 0;
    fakeDesktop.duringTurn = [&](std::size_t turn) {
      if (turn == 61) end = stubborn.wait();
    };
    support::Child named([&] { return ::execl("/bin/sleep", kProgram, "1000", nullptr); });
    if (!utilCloseAllNotificationWorkflows()) return 1;
    if (end == 0) end = stubborn.wait();
    if (end != 128 + SIGKILL) return 2;
    return ::kill(named.id(), 0) == 0 && ::waitpid(named.id(), nullptr, WNOHANG) == 0 ? 0 : 3;
  });
  if (IsSkipped()) return;
  EXPECT_EQ(logged(), Lines{trying});
}

TEST_F(NotificationWorkflowsTest, AWorkflowThatEndsWithinTwoSecondsOfTheKillingIsSuccess) {
  amongItself([&] {
    Workflow workflow;
    fakeDesktop.duringTurn = [&](std::size_t turn) {
      if (turn == 64) workflow.release();
    };
    return utilCloseAllNotificationWorkflows() && fakeDesktop.turns.size() == 64 ? 0 : 1;
  });
  if (IsSkipped()) return;
  EXPECT_EQ(logged(), Lines{trying});
}

TEST_F(NotificationWorkflowsTest, AWorkflowOfAnotherProgramIsLeftAloneAndThatIsAFailure) {
  amongItself([&] {
    Workflow workflow;
    if (utilCloseAllNotificationWorkflows() || fakeDesktop.turns.size() != 64) return 1;
    return workflow.release();
  });
  if (IsSkipped()) return;
  EXPECT_EQ(logged(), (Lines{trying, failed}));
}

TEST_F(NotificationWorkflowsTest, ANotifierThatClosesAllWorkflowsDoesNotKillItself) {
  const std::string program = notifier("/proc/self/exe");
  amongItself([&] {
    Workflow workflow;
    support::Child self([&] {
      return ::execl(program.c_str(), program.c_str(), "--gtest_also_run_disabled_tests", "--gtest_brief=1",
                     "--gtest_filter=*DISABLED_WithAWorkflowLeft*", nullptr);
    });
    const int result = self.wait();
    workflow.release();
    return result;
  });
}

// Run by the test before, as a program of its own.
TEST_F(NotificationWorkflowsTest, DISABLED_WithAWorkflowLeftItFails) {
  EXPECT_FALSE(utilCloseAllNotificationWorkflows());
}

}  // namespace
