#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <thread>

#include "applog/OVNLoggingFileOperationFlag.h"
#include "logging/LoggingCore.h"
#include "tests/applog/LoggerFixture.h"
#include "tests/logging/RecordingTarget.h"
#include "tests/support/SemaphoreOperations.h"
#include "tests/support/Semaphores.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kFlagNumber = 2147483547;
constexpr int kLockNumber = 11;
constexpr int kMutex = 1;

std::time_t secondsToAdd = 0;

class LoggerFaultTest : public LoggerTest {
 protected:
  int flagSet() const { return support::setOf(home, kFlagNumber); }
  int lockSet() const { return support::setOf(file, kLockNumber); }

  static bool holdFlag() {
    OVNLoggingFileOperationFlag flag;
    flag.semid = -1;
    flag.held = false;
    return flag.createFlag() && flag.startFileOperation();
  }

  bool createFileLock() const {
    const int set = ::semget(::ftok(file.c_str(), kLockNumber), 2, IPC_CREAT | 0666);
    support::setValueOf(set, kMutex, 1);
    return set != -1;
  }

  bool holdFileLock() const {
    sembuf take{kMutex, -1, SEM_UNDO};
    return ::semop(lockSet(), &take, 1) == 0;
  }

  static void remove(int set) { ::semctl(set, 0, IPC_RMID); }

  // Runs `body`, which throws or cancels the thread, inside a line.
  class Interrupted : public RecordingTarget {
   public:
    explicit Interrupted(std::function<void()> body) : RecordingTarget("QSU"), body_(std::move(body)) {
      tarn::LoggingCore::getInstance()->registerTarget(this);
    }
    ~Interrupted() override { tarn::LoggingCore::getInstance()->unregisterTarget(this); }
    bool writeLog(tarn::Log_Level, const char*, const char*, const char*, const char*, const char*, const char*,
                  const char*, va_list*, unsigned long long) override {
      body_();
      return true;
    }

   private:
    std::function<void()> body_;
  };
};

// A process that takes the user's flag, or the lock of the file, and keeps it.
class Holder {
 public:
  explicit Holder(const std::function<bool()>& take)
      : process_([&] {
          *holds_ = take();
          return ::pause();
        }) {
    EXPECT_TRUE(support::becomesTrue([&] { return holds_->load(); }));
  }

  void end() {
    process_.kill();
    process_.wait();
  }

 private:
  support::Shared<std::atomic<bool>> holds_;
  support::Child process_;
};

TEST_F(LoggerFaultTest, AHeldFlagDropsAndCountsLines) {
  const auto lines = linesAt(4, [](Logger& logger) {
    Holder holder(holdFlag);
    logger.logInfo("SVO", "one");
    logger.logDebug("SVO", "not enabled");
    logger.logInfo("SVO", "two");
    holder.end();
    logger.logInfo("SVO", "three");
  });
  EXPECT_THAT(lines,
              ElementsAre(EndsWith(" | Missing log lines: 2 (the log could not be locked)"), EndsWith(" | three")));
}

TEST_F(LoggerFaultTest, AHeldFileLockDropsAndCountsLines) {
  const auto lines = linesAt(4, [this](Logger& logger) {
    Holder holder([this] { return holdFileLock(); });
    logger.logInfo("SVO", "one");
    holder.end();
    logger.logInfo("SVO", "two");
  });
  EXPECT_THAT(lines, ElementsAre(HasSubstr(" | Missing log lines: 1 "), EndsWith(" | two")));
}

TEST_F(LoggerFaultTest, StartsAndEndsWhileBothLocksAreHeld) {
  const support::SetRemover remover(file, kLockNumber);
  std::filesystem::create_directories(home + "/Library/Logs");
  support::writeFile(file, "");
  Holder holder([this] { return createFileLock() && holdFileLock() && holdFlag(); });
  EXPECT_THAT(linesAt(4, logEachLevel), IsEmpty());
  holder.end();
  EXPECT_THAT(linesAt(4, logEachLevel), SizeIs(4));
}

TEST_F(LoggerFaultTest, AForeignFlagIsNotUsed) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can change its user";
  const key_t key = ::ftok(home.c_str(), kFlagNumber);
  const support::SetRemover remover(home, kFlagNumber);
  support::Child other([&] { return ::setuid(4711) == 0 && ::semget(key, 2, IPC_CREAT | 0666) != -1 ? 0 : 1; });
  ASSERT_EQ(other.wait(), 0);
  EXPECT_THAT(linesAt(4, [](Logger& logger) { logger.logInfo("SVO", "text"); }), ElementsAre(EndsWith(" | text")));
  EXPECT_EQ(support::valueOf(flagSet(), 0), 0);
}

TEST_F(LoggerFaultTest, AForeignFileLockDropsLines) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can change its user";
  std::filesystem::create_directories(home + "/Library/Logs");
  support::writeFile(file, "");
  const key_t key = ::ftok(file.c_str(), kLockNumber);
  const support::SetRemover remover(file, kLockNumber);
  support::Child other([&] { return ::setuid(4711) == 0 && ::semget(key, 2, IPC_CREAT | 0666) != -1 ? 0 : 1; });
  ASSERT_EQ(other.wait(), 0);
  EXPECT_THAT(linesAt(4, [](Logger& logger) { logger.logInfo("SVO", "text"); }), IsEmpty());
}

TEST_F(LoggerFaultTest, AnAbandonedFlagGetsItsFirstValue) {
  ASSERT_NE(::semget(::ftok(home.c_str(), kFlagNumber), 2, IPC_CREAT | 0666), -1);
  EXPECT_THAT(linesAt(4, [](Logger& logger) { logger.logInfo("SVO", "text"); }), ElementsAre(EndsWith(" | text")));
}

TEST_F(LoggerFaultTest, RemovedSetsAreCreatedAgain) {
  const auto lines = linesAt(4, [this](Logger& logger) {
    logger.logInfo("SVO", "one");
    remove(flagSet());
    remove(lockSet());
    logger.logInfo("SVO", "two");
    EXPECT_EQ(support::valueOf(flagSet(), 0), 1);
    EXPECT_EQ(support::valueOf(lockSet(), 0), 1);
  });
  EXPECT_THAT(lines, ElementsAre(EndsWith(" | one"), EndsWith(" | two")));
  EXPECT_EQ(flagSet(), -1);
  EXPECT_EQ(lockSet(), -1);
}

// A set may be removed again before the line that has created it takes it: that line is counted.
TEST_F(LoggerFaultTest, ThreadsCreateRemovedSetsAgain) {
  const auto lines = linesAt(4, [this](Logger& logger) {
    std::atomic<int> running{2};
    const auto write = [&] {
      for (int i = 0; i < 500; ++i)
        logger.logInfo("SVO", "text");
      --running;
    };
    std::thread one(write);
    std::thread other(write);
    while (running > 0) {
      const auto size = std::filesystem::file_size(file);
      remove(flagSet());
      remove(lockSet());
      EXPECT_TRUE(support::becomesTrue([&] { return running == 0 || std::filesystem::file_size(file) > size; }));
    }
    one.join();
    other.join();
    logger.logInfo("SVO", "text");
  });
  int accounted = 0;
  for (const std::string& line : lines) {
    const std::size_t note = line.find("Missing log lines: ");
    accounted += note == std::string::npos ? 1 : std::stoi(line.substr(note + sizeof "Missing log lines:"));
  }
  EXPECT_EQ(accounted, 1001);
}

TEST_F(LoggerFaultTest, AFailedReleaseStopsNoProcess) {
  const auto lines = linesAt(4, [](Logger& logger) {
    {
      const support::FailingOperation failing(kMutex, +1, EIO, 2);
      logger.logInfo("SVO", "one");
    }
    EXPECT_EQ(support::inChild([] {
                Logger::getInstance()->logInfo("SVO", "two");
                return 0;
              }),
              0);
    logger.logInfo("SVO", "three");
  });
  EXPECT_THAT(lines, ElementsAre(EndsWith(" | one"), EndsWith(" | two"), EndsWith(" | three")));
}

// Both locks of the first line are neither released nor removed.
TEST_F(LoggerFaultTest, AProcessDoesNotWaitForItself) {
  const auto lines = linesAt(4, [this](Logger& logger) {
    {
      const support::FailingOperation failing(kMutex, +1, EIO, 2);
      const support::FailingRemoval failingToo;
      logger.logInfo("SVO", "one");
    }
    EXPECT_EQ(support::inChild([&] {
                logger.logInfo("SVO", "lost");
                return support::valueOf(flagSet(), kMutex);
              }),
              0);
    logger.logInfo("SVO", "two");
    EXPECT_EQ(support::valueOf(flagSet(), kMutex), 1);
    EXPECT_EQ(support::valueOf(lockSet(), kMutex), 1);
  });
  EXPECT_THAT(lines, ElementsAre(EndsWith(" | one"), EndsWith(" | two")));
}

TEST_F(LoggerFaultTest, AFlagWithoutFirstValueGetsOneLater) {
  const support::FailingOperation failing(kMutex, +1, EIO);
  const auto lines = linesAfter([this](Logger& logger) {
    EXPECT_EQ(support::valueOf(flagSet(), kMutex), 0);
    logger.setLogLevel(level(4), nullptr, nullptr);
    logger.logInfo("SVO", "lost");
    secondsToAdd = 60;
    logger.logInfo("SVO", "text");
  });
  EXPECT_THAT(lines, ElementsAre(HasSubstr(" | Missing log lines: 1 "), EndsWith(" | text")));
}

TEST_F(LoggerFaultTest, AnExceptionReleasesTheFlag) {
  linesAt(4, [this](Logger& logger) {
    const Interrupted target([] { throw std::runtime_error("full"); });
    EXPECT_THROW(logger.logInfo("SVO", "one"), std::runtime_error);
    EXPECT_EQ(support::valueOf(flagSet(), kMutex), 1);
    EXPECT_THROW(logger.logInfo("SVO", "two"), std::runtime_error);
  });
}

TEST_F(LoggerFaultTest, ACancelledThreadReleasesTheFlag) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer reports the stack of a thread that ends by cancellation";
#endif
  const auto lines = linesAt(4, [this](Logger& logger) {
    {
      const Interrupted target([] { ::pthread_testcancel(); });
      std::thread thread([&] {
        ::pthread_cancel(::pthread_self());
        logger.logInfo("SVO", "one");
      });
      thread.join();
      EXPECT_EQ(support::valueOf(flagSet(), kMutex), 1);
    }
    logger.logInfo("SVO", "two");
  });
  EXPECT_THAT(lines, Contains(EndsWith(" | two")));
}

TEST_F(LoggerFaultTest, AForkedProcessThatExitsKeepsTheLocks) {
  const auto lines = linesAt(4, [this](Logger& logger) {
    EXPECT_EQ(support::inChild([] { return 0; }), 0);
    EXPECT_EQ(support::valueOf(flagSet(), 0), 1);
    EXPECT_EQ(support::valueOf(lockSet(), 0), 1);
    logger.logInfo("SVO", "text");
  });
  EXPECT_THAT(lines, ElementsAre(EndsWith(" | text")));
}

TEST_F(LoggerFaultTest, AForkedProcessLogsAndIsCounted) {
  const auto lines = linesAt(4, [this](Logger& logger) {
    EXPECT_EQ(support::inChild([&] {
                logger.logInfo("SVO", "child");
                return support::valueOf(flagSet(), 0) == 2 && support::valueOf(lockSet(), 0) == 2 ? 0 : 1;
              }),
              0);
    EXPECT_EQ(support::valueOf(flagSet(), 0), 1);
    EXPECT_EQ(support::valueOf(lockSet(), 0), 1);
    logger.logInfo("SVO", "parent");
  });
  EXPECT_THAT(lines, ElementsAre(EndsWith(" | child"), EndsWith(" | parent")));
}

TEST_F(LoggerFaultTest, ProcessesMayForkWhileThreadsLog) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "a fork may copy a lock of the sanitizer that another thread holds";
#endif
  constexpr int kForks = 10;
  const auto lines = linesAt(4, [](Logger& logger) {
    std::atomic<bool> ends{false};
    std::thread writer([&] {
      while (!ends)
        logger.logInfo("SVO", "thread");
    });
    for (int i = 0; i < kForks; ++i) {
      support::Child child(
          [&] {
            logger.logInfo("SVO", "child");
            return logger.finalize() ? 0 : 1;
          },
          support::Child::Ending::kOrderly);
      EXPECT_EQ(child.wait(), 0);
    }
    ends = true;
    writer.join();
  });
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& line) { return line.find("| child") != std::string::npos; }),
            kForks);
}

// Returns from a process while its threads log.
class ExitTest : public LoggerFaultTest {
 protected:
  void exitWhile(void (*log)(Logger&)) {
    for (int round = 0; round < 10; ++round) {
      linesAt(4, [&](Logger& logger) {
        const auto size = std::filesystem::file_size(file);
        for (int i = 0; i < 4; ++i) {
          std::thread([&logger, log] {
            for (;;)
              log(logger);
          }).detach();
        }
        EXPECT_TRUE(support::becomesTrue([&] { return std::filesystem::file_size(file) > size + 10000; }));
      });
    }
    EXPECT_EQ(flagSet(), -1);
    EXPECT_EQ(lockSet(), -1);
  }
};

TEST_F(ExitTest, ThreadsMayLogWhileTheProcessExits) {
  exitWhile([](Logger& logger) { logger.logInfo("SVO", "text"); });
}

// These functions do not take the flag.
TEST_F(ExitTest, ThreadsMayUseTheBaseWhileExiting) {
  exitWhile([](Logger& logger) { logger.info("%s", "text"); });
}

// Its destructor runs after the logger has closed its locks.
class LateLine {
 public:
  LateLine() = default;
  LateLine(const LateLine&) = delete;
  LateLine& operator=(const LateLine&) = delete;
  ~LateLine() { Logger::getInstance()->logInfo("SVO", "late"); }
};

TEST_F(LoggerFaultTest, ALateStaticObjectMayLog) {
  EXPECT_EQ(support::inChild([] {
              static const LateLine late;
              Logger::getInstance()->setLogLevel(level(4), nullptr, nullptr);
              return 0;
            }),
            0);
  EXPECT_THAT(support::linesOf(file), IsEmpty());
  EXPECT_EQ(flagSet(), -1);
  EXPECT_EQ(lockSet(), -1);
}

}  // namespace

// Replaces the function of the C library, which the clocks of the C++ library call.
extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  const long result = ::syscall(SYS_clock_gettime, clock, now);
  now->tv_sec += secondsToAdd;
  return static_cast<int>(result);
}
