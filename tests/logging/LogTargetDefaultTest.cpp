#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "tests/logging/FileTargetFixture.h"
#include "tests/support/Child.h"
#include "tests/support/Output.h"

namespace {

int chmodError = 0;  // 0 means a real `chmod`

}  // namespace

// Replaces the function of the C library.
extern "C" int chmod(const char* path, mode_t mode) noexcept {
  if (chmodError == 0) return ::fchmodat(AT_FDCWD, path, mode, 0);
  errno = chmodError;
  return -1;
}

namespace {

using WritingTest = RegisteredTargetTest;

// Returns the number of write calls of this thread, -1 if the system does not count them.
long writeCalls() {
  std::ifstream counts("/proc/thread-self/io");
  std::string name;
  for (long value = 0; counts >> name >> value;) {
    if (name == "syscw:") return value;
  }
  return -1;
}

bool isOpen(const std::string& path) {
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    if (std::filesystem::read_symlink(entry, ignored) == path) return true;
  }
  return false;
}

// Returns the number of this process's descriptors of the file that a started program would inherit.
int inheritable(const std::string& path) {
  int count = 0;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    if (std::filesystem::read_symlink(entry, ignored) != path) continue;
    const int flags = ::fcntl(std::stoi(entry.path().filename()), F_GETFD);
    count += (flags & FD_CLOEXEC) == 0 ? 1 : 0;
  }
  return count;
}

TEST_F(FileTargetTest, UnregisteredTargetDoesNotWrite) {
  log(tarn::FATAL, "text");
  EXPECT_EQ(support::contentsOf(file), "");
}

TEST_F(WritingTest, StartedProgramsDoNotInheritTheFile) {
  ASSERT_TRUE(isOpen(file));
  EXPECT_EQ(inheritable(file), 0);
  ASSERT_TRUE(target.setLogFile("Other.log", folder.path().c_str()));
  ASSERT_TRUE(isOpen(folder / "Other.log"));
  EXPECT_EQ(inheritable(folder / "Other.log"), 0);
}

// In a child, because a thread that waits for a reader cannot be ended.
TEST_F(FileTargetTest, SwappedInPipeDoesNotBlock) {
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const support::Shared<std::atomic<bool>> opened;
  support::Child opener([&] {
    std::fstream stream;
    for (int i = 0; i < 10000; ++i)
      (void)target.SetStreamHandle(stream);
    *opened = true;
    return 0;
  });
  const std::string next = folder / "next";
  EXPECT_TRUE(support::becomesTrue([&] {
    std::filesystem::create_hard_link(pipe, next);
    std::filesystem::rename(next, file);
    support::writeFile(next, "");
    std::filesystem::rename(next, file);
    return opened->load();
  }));
}

TEST_F(FileTargetTest, TargetWithoutPathUsesLogFolder) {
  tarn::LogTargetDefault other("other");
  ASSERT_TRUE(other.onRegisterTarget());
  EXPECT_TRUE(std::filesystem::exists(support::ownLogFolder() + "/TARN.log"));
  other.onUnregisterTarget();
}

TEST_F(FileTargetTest, TargetWithoutPathNeedsALogFolder) {
  const support::PasswordDatabase empty("");
  tarn::LogTargetDefault other("other");
  EXPECT_FALSE(other.SetStreamPath("a.log"));
  EXPECT_FALSE(other.onRegisterTarget());
}

TEST_F(FileTargetTest, NewLogFileHasMode0666) {
  std::filesystem::remove(file);
  const mode_t previous = ::umask(077);
  ASSERT_TRUE(target.onRegisterTarget());
  ::umask(previous);
  EXPECT_EQ(support::modeOf(file), 0666u);
  target.onUnregisterTarget();
}

TEST_F(FileTargetTest, FailedChmodIsOnlyReported) {
  std::filesystem::remove(file);
  chmodError = EPERM;
  const std::string output = support::outputOf([&] { EXPECT_TRUE(target.onRegisterTarget()); });
  chmodError = 0;
  EXPECT_EQ(output, "\n Error Set File permissions. errno = Operation not permitted");
  log(tarn::INFO, "text");
  EXPECT_EQ(lastMessage(), "text");
  target.onUnregisterTarget();
}

TEST_F(FileTargetTest, DanglingLinkCountsAsExistingFile) {
  std::filesystem::remove(file);
  std::filesystem::create_symlink("elsewhere.log", file);
  const mode_t previous = ::umask(077);
  ASSERT_TRUE(target.onRegisterTarget());
  ::umask(previous);
  EXPECT_EQ(support::modeOf(folder / "elsewhere.log"), 0600u);
  target.onUnregisterTarget();
}

TEST_F(FileTargetTest, ExistingLogFileKeepsItsMode) {
  ::chmod(file.c_str(), 0640);
  ASSERT_TRUE(target.onRegisterTarget());
  EXPECT_EQ(support::modeOf(file), 0640u);
  target.onUnregisterTarget();
}

TEST_F(FileTargetTest, TargetWithoutLockWritesNothing) {
  const int foreign = ::semget(::ftok(file.c_str(), 11), 1, IPC_CREAT | 0600);  // has too few members
  ASSERT_TRUE(target.onRegisterTarget());
  ::semctl(foreign, 0, IPC_RMID);
  log(tarn::FATAL, "text");
  EXPECT_EQ(support::contentsOf(file), "");
  target.onUnregisterTarget();
}

TEST_F(FileTargetTest, WritesNothingAfterUnregistration) {
  target.onRegisterTarget();
  log(tarn::FATAL, "one");
  EXPECT_TRUE(target.onUnregisterTarget());
  log(tarn::FATAL, "two");
  EXPECT_EQ(support::linesOf(file).size(), 1u);
  EXPECT_EQ(support::setOf(file, 11), -1);
}

TEST_F(FileTargetTest, UnregisteredTargetHasNoOpenFile) {
  ASSERT_TRUE(target.onRegisterTarget());
  EXPECT_TRUE(isOpen(file));
  target.onUnregisterTarget();
  EXPECT_FALSE(isOpen(file));
}

TEST_F(FileTargetTest, SecondRegistrationKeepsTheLock) {
  target.onRegisterTarget();
  target.onRegisterTarget();
  EXPECT_EQ(support::valueOf(support::setOf(file, 11), 0), 1);
  log(tarn::INFO, "text");
  EXPECT_EQ(lastMessage(), "text");
  target.onUnregisterTarget();
}

TEST_F(FileTargetTest, DestructorDetachesFromTheLock) {
  {
    tarn::LogTargetDefault other("other");
    other.setLogFile("Kelvo.log", folder.path().c_str());
    other.onRegisterTarget();
    EXPECT_NE(support::setOf(file, 11), -1);
  }
  EXPECT_EQ(support::setOf(file, 11), -1);
}

TEST_F(WritingTest, LineIsWrittenBeforeTheCallReturns) {
  log(tarn::INFO, "text");
  EXPECT_EQ(lastMessage(), "text");
  EXPECT_EQ(support::contentsOf(file).back(), '\n');
}

TEST_F(WritingTest, LinesAreAppended) {
  support::writeFile(file, "previous\n");
  log(tarn::INFO, "text");
  EXPECT_EQ(support::linesOf(file).front(), "previous");
  EXPECT_EQ(lastMessage(), "text");
}

TEST_F(WritingTest, MessageBelowTheLevelIsNotWritten) {
  target.setLogLevel(tarn::WARN);
  log(tarn::INFO, "below");
  log(tarn::WARN, "equal");
  log(static_cast<tarn::Log_Level>(41), "above");
  EXPECT_EQ(support::linesOf(file).size(), 2u);
}

TEST_F(WritingTest, LevelNoneWritesOnlyLevelNone) {
  target.setLogLevel(tarn::NONE);
  log(tarn::FATAL, "below");
  EXPECT_EQ(support::contentsOf(file), "");
  log(tarn::NONE, "equal");
  EXPECT_NE(lastLine().find("[NONE]"), std::string::npos);
}

TEST_F(WritingTest, LevelIsTestedBeforeTheTokenCheck) {
  target.setLogLevel(tarn::INFO);
  log(tarn::DEBUG, "a eyJhbGc.eyJzdWI b");
  EXPECT_EQ(support::contentsOf(file), "");
  target.setLogLevel(tarn::DEBUG);
  log(tarn::DEBUG, "a eyJhbGc.eyJzdWI b");
  EXPECT_NE(lastLine().find("[WARN]"), std::string::npos);
  EXPECT_EQ(lastMessage(), "Found access/device token. Log skipped.");
}

TEST_F(WritingTest, FormattedMessageIsCutTo4094Characters) {
  const std::string text(5000, 'x');
  logFormatted("%s", text.c_str());
  EXPECT_EQ(lastMessage(), std::string(4094, 'x'));
}

TEST_F(WritingTest, MessageWithoutArgumentsIsNotFormattedOrCut) {
  const std::string text = "100%s%n" + std::string(20000, 'x');
  log(tarn::INFO, text.c_str());
  EXPECT_EQ(lastMessage(), text);
}

TEST_F(WritingTest, NullMessageIsEmpty) {
  log(tarn::INFO, nullptr);
  EXPECT_EQ(lastMessage(), "");
  logFormatted(nullptr);
  EXPECT_EQ(lastMessage(), "");
  EXPECT_EQ(support::linesOf(file).size(), 2u);
}

TEST_F(WritingTest, LineIsOneWrite) {
  if (writeCalls() < 0) GTEST_SKIP() << "the system does not count write calls";
  log(tarn::INFO, "a sanitizer writes when code runs for the first time");
  for (const std::size_t size : {0U, 10U, 1000U, 5000U, 20000U}) {
    const std::string text(size, 'x');
    const long before = writeCalls();
    log(tarn::INFO, text.c_str());
    EXPECT_EQ(writeCalls() - before, 1) << size;
  }
}

TEST_F(WritingTest, UnfinishedLineIsEnded) {
  log(tarn::INFO, "one");
  std::ofstream(file, std::ios::app) << "incomplete";
  log(tarn::INFO, "two");
  log(tarn::INFO, "three");
  const std::vector<std::string> lines = support::linesOf(file);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[1], "incomplete");
  EXPECT_EQ(lastMessage(), "three");
}

TEST_F(WritingTest, WritingContinuesAfterTruncation) {
  log(tarn::INFO, "one");
  std::filesystem::resize_file(file, 0);
  log(tarn::INFO, "two");
  EXPECT_EQ(support::linesOf(file).size(), 1u);
  EXPECT_EQ(lastMessage(), "two");
}

TEST_F(WritingTest, LinesAreDroppedOnlyWithoutSpace) {
  log(tarn::INFO, "one");
  const rlim_t size = std::filesystem::file_size(file);
  support::Child writer([&] {
    const rlimit full{size + 10, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &full);
    log(tarn::INFO, "two");
    log(tarn::INFO, "three");
    const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    log(tarn::INFO, "four");
    log(tarn::INFO, "five");
    return target.onUnregisterTarget() ? 0 : 1;
  });
  EXPECT_EQ(writer.wait(), 0);
  const std::vector<std::string> lines = support::linesOf(file);
  ASSERT_EQ(lines.size(), 4u) << support::contentsOf(file);
  EXPECT_EQ(lines[1].size(), 10u);
  EXPECT_NE(lines[2].find(" | four"), std::string::npos);
  EXPECT_EQ(lastMessage(), "five");
}

TEST_F(WritingTest, FileSizeSignalEndsTheProcessOutsideLines) {
  const support::SetRemover remover(file, 11);
  support::Child writer([&] {
    const rlimit full{10, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &full);
    log(tarn::INFO, "one");
    log(tarn::INFO, "two");
    std::ofstream(folder / "other") << "more than ten bytes" << std::flush << "and more" << std::flush;
    return 0;
  });
  EXPECT_EQ(writer.wait(), 128 + SIGXFSZ);
}

TEST_F(FileTargetTest, FileSizeSignalOfTheProgramIsKept) {
  support::Child writer([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    target.onRegisterTarget();
    const bool isKept = ::signal(SIGXFSZ, SIG_DFL) == SIG_IGN;
    target.onUnregisterTarget();
    return isKept ? 0 : 1;
  });
  EXPECT_EQ(writer.wait(), 0);
}

TEST_F(WritingTest, ThreadsDoNotMixTheirLines) {
  const auto write = [&](char letter) {
    for (int i = 0; i < 2000; ++i)
      log(tarn::INFO, std::string(100, letter).c_str());
  };
  std::thread one(write, 'a');
  std::thread other(write, 'b');
  one.join();
  other.join();
  int whole = 0;
  for (const std::string& line : support::linesOf(file)) {
    const std::string message = line.substr(line.rfind(" | ") + 3);
    if (message == std::string(100, 'a') || message == std::string(100, 'b')) ++whole;
  }
  EXPECT_EQ(whole, 4000);
}

TEST_F(WritingTest, WaitingWriterWritesAfterTheRelease) {
  const int set = support::setOf(file, 11);
  tarn::BinaryLock holder;
  ASSERT_TRUE(holder.create(file, 11));
  ASSERT_TRUE(holder.wait());
  std::thread writer([&] { log(tarn::INFO, "text"); });
  EXPECT_TRUE(support::becomesTrue([&] { return support::waitersOn(set, 1) == 1; }));
  EXPECT_EQ(support::contentsOf(file), "");
  holder.release();
  writer.join();
  EXPECT_EQ(lastMessage(), "text");
  holder.finalize();
}

}  // namespace
