#include "platform/CloseOnExec.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/UniqueFd.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using platform::UniqueFd;

bool isInherited(int fd) {
  return (::fcntl(fd, F_GETFD) & FD_CLOEXEC) == 0;
}

class CloseOnExec : public testing::Test {
 protected:
  UniqueFd open(const std::string& name) const {
    return UniqueFd(::open((folder_ / name).c_str(), O_CREAT | O_RDWR, 0600));
  }

  const support::TemporaryFolder folder_;
  const UniqueFd first_ = open("first");
  const UniqueFd second_ = open("second");
};

// In a child: the test program has descriptors of its own.
TEST_F(CloseOnExec, AppliesToAllButTheStandardDescriptors) {
  EXPECT_EQ(support::inChild([this] {
              platform::closeAllOnExec();
              if (isInherited(first_.get()) || isInherited(second_.get())) return 1;
              return isInherited(STDIN_FILENO) && isInherited(STDOUT_FILENO) && isInherited(STDERR_FILENO) ? 7 : 2;
            }),
            7);
}

}  // namespace
