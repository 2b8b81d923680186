#include <gtest/gtest.h>
#include <unistd.h>

#include "applog/OVNLoggingBufferOperationFlag.h"
#include "applog/OVNLoggingFileOperationFlag.h"
#include "tests/support/Child.h"
#include "tests/support/Home.h"
#include "tests/support/Semaphores.h"

namespace {

constexpr int kFileOperationNumber = 2147483547;
constexpr int kReservedNumber = 57445459;

template <typename Flag>
Flag notCreated() {
  Flag flag;
  flag.semid = -1;
  flag.held = false;
  return flag;
}

TEST(FileOperationFlag, KeyPathIsTheHomeFolder) {
  auto flag = notCreated<OVNLoggingFileOperationFlag>();
  ASSERT_TRUE(flag.createFlag());
  EXPECT_EQ(flag.semid, support::setOf(support::ownHome(), kFileOperationNumber));
  EXPECT_TRUE(flag.finalizeFlag());
  EXPECT_EQ(support::setOf(support::ownHome(), kFileOperationNumber), -1);
}

TEST(FileOperationFlag, IsHeldBetweenStartAndEnd) {
  auto flag = notCreated<OVNLoggingFileOperationFlag>();
  ASSERT_TRUE(flag.createFlag());
  EXPECT_TRUE(flag.startFileOperation());
  EXPECT_EQ(flag.getCount(), 0);
  EXPECT_TRUE(flag.endFileOperation());
  EXPECT_EQ(flag.getCount(), 1);
  flag.finalizeFlag();
}

TEST(FileOperationFlag, CreateFailsWithoutHome) {
  const support::PasswordDatabase empty("");
  auto flag = notCreated<OVNLoggingFileOperationFlag>();
  EXPECT_FALSE(flag.createFlag());
  EXPECT_EQ(flag.semid, -1);
  EXPECT_FALSE(flag.startFileOperation());
}

TEST(BufferOperationFlag, IsHeldBetweenStartAndEnd) {
  auto flag = notCreated<OVNLoggingBufferOperationFlag>();
  ASSERT_TRUE(flag.createFlag());
  EXPECT_TRUE(flag.startBufferOperation());
  EXPECT_EQ(flag.getCount(), 0);
  EXPECT_TRUE(flag.endBufferOperation());
  EXPECT_TRUE(flag.finalizeFlag());
}

TEST(BufferOperationFlag, ProjectNumberIsTheProcessId) {
  auto flag = notCreated<OVNLoggingBufferOperationFlag>();
  ASSERT_TRUE(flag.createFlag());
  const int low = ::getpid() & 0xff;
  if (low != (kFileOperationNumber & 0xff) && low != (kReservedNumber & 0xff)) {
    EXPECT_EQ(flag.semid, support::setOf(support::ownHome(), ::getpid()));
  }
  flag.finalizeFlag();
}

TEST(BufferOperationFlag, CreateFailsWithoutHome) {
  const support::PasswordDatabase empty("");
  auto flag = notCreated<OVNLoggingBufferOperationFlag>();
  EXPECT_FALSE(flag.createFlag());
}

TEST(BufferOperationFlag, NoProcessIdGivesAReservedKey) {
  auto fileFlag = notCreated<OVNLoggingFileOperationFlag>();
  ASSERT_TRUE(fileFlag.createFlag());
  for (int process = 0; process < 300; ++process) {
    support::Child child([&] {
      auto flag = notCreated<OVNLoggingBufferOperationFlag>();
      const bool created = flag.createFlag();
      const bool own =
          flag.semid != fileFlag.semid && flag.semid != support::setOf(support::ownHome(), kReservedNumber);
      return created && flag.finalizeFlag() && own ? 0 : 1;
    });
    ASSERT_EQ(child.wait(), 0);
  }
  fileFlag.finalizeFlag();
}

}  // namespace
