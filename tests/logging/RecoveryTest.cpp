// A registered target whose file, folder or lock disappears, or was missing from the start.

#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/logging/FileTargetFixture.h"
#include "tests/support/Child.h"

namespace {

class RecoveryTest : public RegisteredTargetTest {
 protected:
  void logAfter(unsigned seconds, const char* message) { log(tarn::INFO, message, start + seconds * 1000ULL); }

  const unsigned long long start = static_cast<unsigned long long>(std::time(nullptr)) * 1000;
};

TEST_F(RecoveryTest, DeletedFileIsCreatedAgainAfterAMinute) {
  std::filesystem::remove(file);
  logAfter(30, "one");
  EXPECT_FALSE(std::filesystem::exists(file));
  logAfter(100, "two");
  EXPECT_EQ(lastMessage(), "two");
}

TEST_F(RecoveryTest, RenamedFileIsLeftAfterAMinute) {
  logAfter(0, "one");
  std::filesystem::rename(file, folder / "rotated");
  logAfter(100, "two");
  EXPECT_EQ(support::linesOf(folder / "rotated").size(), 1u);
  EXPECT_EQ(support::linesOf(file).size(), 1u);
}

TEST_F(RecoveryTest, ReplacedFileHasItsOwnLock) {
  support::writeFile(folder / "new", "");
  std::filesystem::rename(folder / "new", file);
  EXPECT_EQ(support::setOf(file, 11), -1);
  logAfter(100, "text");
  EXPECT_EQ(lastMessage(), "text");
  EXPECT_EQ(support::valueOf(support::setOf(file, 11), 0), 1);
  EXPECT_EQ(support::valueOf(support::setOf(file, 11), 1), 1);
}

TEST_F(RecoveryTest, ClockSetBackDoesNotDelay) {
  std::filesystem::remove(file);
  log(tarn::INFO, "text", start - 3600 * 1000);
  EXPECT_EQ(lastMessage(), "text");
}

TEST_F(FileTargetTest, MissingLockIsCreatedAfterAMinute) {
  const int foreign = ::semget(::ftok(file.c_str(), 11), 1, IPC_CREAT | 0600);  // has too few members
  ASSERT_TRUE(target.onRegisterTarget());
  ::semctl(foreign, 0, IPC_RMID);
  log(tarn::INFO, "one");
  EXPECT_EQ(support::contentsOf(file), "");
  log(tarn::INFO, "two", (static_cast<unsigned long long>(std::time(nullptr)) + 100) * 1000);
  EXPECT_EQ(lastMessage(), "two");
  target.onUnregisterTarget();
}

TEST_F(FileTargetTest, DeletedLogFolderIsCreatedAgain) {
  target.setLogFile("Kelvo.log", nullptr);
  ASSERT_TRUE(target.onRegisterTarget());
  std::filesystem::remove_all(home + "/Library");
  log(tarn::INFO, "text", (static_cast<unsigned long long>(std::time(nullptr)) + 100) * 1000);
  EXPECT_EQ(support::linesOf(support::ownLogFolder() + "/Kelvo.log").size(), 1u);
  target.onUnregisterTarget();
}

TEST_F(RecoveryTest, ThreadsLoseNoLineOfAReplacedFile) {
  std::atomic<unsigned> second{0};
  std::atomic<int> written{0};
  std::atomic<bool> ended{false};
  const auto write = [&] {
    for (; !ended; ++written)
      logAfter(second, "text");
  };
  std::thread one(write);
  std::thread other(write);
  for (int i = 0; i < 20; ++i) {
    std::filesystem::rename(file, folder / std::to_string(i));
    second += 100;
    EXPECT_TRUE(support::becomesTrue([&] { return std::filesystem::exists(file); }));
  }
  ended = true;
  one.join();
  other.join();

  int whole = 0;
  for (const std::string& name : support::namesIn(folder.path())) {
    for (const std::string& line : support::linesOf(folder / name))
      whole += line.size() > 60 && line.substr(line.size() - 7) == " | text" ? 1 : 0;
  }
  EXPECT_EQ(whole, written);
}

}  // namespace
