#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "platform/Processes.h"
#include "tests/macos/doubles/ProcessTable.h"
#include "tests/macos/platform/PlatformTest.h"

namespace {

using testing::Contains;
using testing::IsEmpty;

class ProcessListTest : public macos_test::PlatformTest {
 protected:
  ProcessListTest() {
    doubles::tableGrowths = 0;
    doubles::argumentArea.reset();
  }
};

using ProgramPathTest = ProcessListTest;

TEST_F(ProcessListTest, ContainsThisProcess) {
  EXPECT_THAT(platform::allProcesses(), testing::AllOf(Contains(::getpid()), testing::Each(testing::Gt(0))));
}

TEST_F(ProcessListTest, IsReadAgainIfItHasGrown) {
  doubles::tableGrowths = 2;
  EXPECT_THAT(platform::allProcesses(), Contains(::getpid()));
}

TEST_F(ProcessListTest, IsEmptyAfterAFailure) {
  for (const int error : {EPERM, EINVAL, EFAULT}) {
    doubles::failCall("sysctl", error);
    EXPECT_THAT(platform::allProcesses(), IsEmpty());
  }
  doubles::failCall("sysctl size", ENOMEM);
  EXPECT_THAT(platform::allProcesses(), IsEmpty());
}

TEST_F(ProcessListTest, IsEmptyIfItGrowsForever) {
  doubles::failCall("sysctl", ENOMEM);
  EXPECT_THAT(platform::allProcesses(), IsEmpty());
}

TEST_F(ProgramPathTest, IsThatOfTheExecutable) {
  EXPECT_EQ(platform::programOf(::getpid()), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST_F(ProgramPathTest, IsReadAgainIfTheArgumentsHaveGrown) {
  doubles::tableGrowths = 1;
  EXPECT_NE(platform::programOf(::getpid()), "");
}

TEST_F(ProgramPathTest, IsEmptyIfTheArgumentsAreUnreadable) {
  doubles::failCall("sysctl", EINVAL);
  EXPECT_EQ(platform::programOf(::getpid()), "");
  doubles::failCall("sysctl size", EINVAL);
  EXPECT_EQ(platform::programOf(::getpid()), "");
}

TEST_F(ProgramPathTest, EndsWithTheArgumentsIfUnterminated) {
  doubles::argumentArea = "/bin/prog";
  EXPECT_EQ(platform::programOf(::getpid()), "/bin/prog");
  doubles::argumentArea = "";
  EXPECT_EQ(platform::programOf(::getpid()), "");
}

}  // namespace
