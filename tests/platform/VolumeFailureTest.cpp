#include <gtest/gtest.h>

#include <cerrno>

#include "platform/Volumes.h"
#include "tests/platform/FakeFileSystem.h"

namespace {

using platform::mountPointOf;
using platform_test::errors;

TEST(VolumeFailure, ADeadFileSystemSaysSoEvenIfItsPathCanBeFollowed) {
  for (const int error : {ESTALE, ENOTCONN, EIO}) {
    errors = {error};
    errno = 0;
    EXPECT_EQ(mountPointOf("/proc"), std::nullopt);
    EXPECT_EQ(errno, error);
  }
}

TEST(VolumeFailure, WhyAFileSystemDoesNotAnswerCountsBeforeWhyItsPathCannotBeFollowed) {
  errors = {ESTALE};
  EXPECT_EQ(mountPointOf("/no/such"), std::nullopt);
  EXPECT_EQ(errno, ESTALE);
}

TEST(VolumeFailure, AnInterruptedQuestionIsAskedAgain) {
  errors = {EINTR, EINTR};
  EXPECT_EQ(mountPointOf("/proc/self"), "/proc");
  errors = {EINTR, EINTR};
  EXPECT_EQ(platform::isCaseSensitive("/proc/self"), true);
  EXPECT_TRUE(errors.empty());
}

}  // namespace
