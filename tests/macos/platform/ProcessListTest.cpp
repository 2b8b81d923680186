#include "platform/Processes.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/macos/doubles/KernelTables.h"
#include "tests/macos/platform/SystemTest.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ProcessListTest : public macos_test::SystemTest {
 protected:
  ProcessListTest() { doubles::growths = 0; }
  ~ProcessListTest() override { doubles::growths = 0; }

  // The question for the arguments of this process.
  const std::string arguments = " 1 38 " + std::to_string(::getpid());
};

TEST_F(ProcessListTest, NamesThisProcessAndNoneThatIsNotThere) {
  EXPECT_THAT(platform::allProcesses(), testing::AllOf(Contains(::getpid()), testing::Each(testing::Gt(0))));
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("sysctl size 1 14 0", "sysctl 1 14 0"));
}

TEST_F(ProcessListTest, IsAskedForAnewWithItsSizeWhenItHasGrown) {
  doubles::growths = 2;
  EXPECT_THAT(platform::allProcesses(), Contains(::getpid()));
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("sysctl size 1 14 0", "sysctl 1 14 0", "sysctl size 1 14 0",
                                                 "sysctl 1 14 0", "sysctl size 1 14 0", "sysctl 1 14 0"));
}

TEST_F(ProcessListTest, IsEmptyAfterAnyOtherFailure) {
  for (const int error : {EPERM, EINVAL, EFAULT}) {
    doubles::failCall("sysctl", error);
    EXPECT_THAT(platform::allProcesses(), IsEmpty());
    EXPECT_THAT(doubles::takenCalls(), ElementsAre("sysctl size 1 14 0", "sysctl 1 14 0"));
  }
  doubles::failCall("sysctl size", ENOMEM);
  EXPECT_THAT(platform::allProcesses(), IsEmpty());
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("sysctl size 1 14 0"));
}

TEST_F(ProcessListTest, IsGivenUpWhenItNeverCeasesToGrow) {
  doubles::failCall("sysctl", ENOMEM);
  EXPECT_THAT(platform::allProcesses(), IsEmpty());
}

TEST_F(ProcessListTest, AProgramIsThePathThatTheArgumentsBeginWith) {
  EXPECT_EQ(platform::programOf(::getpid()), std::filesystem::read_symlink("/proc/self/exe").string());
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("sysctl size" + arguments, "sysctl" + arguments));
}

TEST_F(ProcessListTest, ArgumentsThatHaveGrownAreAskedForAnew) {
  doubles::growths = 1;
  EXPECT_NE(platform::programOf(::getpid()), "");
  EXPECT_EQ(doubles::takenCalls().size(), 4u);
}

TEST_F(ProcessListTest, AProcessThatDoesNotShowItsArgumentsHasNoProgram) {
  doubles::failCall("sysctl", EINVAL);
  EXPECT_EQ(platform::programOf(::getpid()), "");
  doubles::failCall("sysctl size", EINVAL);
  EXPECT_EQ(platform::programOf(::getpid()), "");
}

TEST_F(ProcessListTest, ArgumentsWithoutAnEndAreReadNoFurtherThanTheyGo) {
  doubles::argumentArea = "/bin/prog";
  EXPECT_EQ(platform::programOf(::getpid()), "/bin/prog");
  doubles::argumentArea = "";
  EXPECT_EQ(platform::programOf(::getpid()), "");
  doubles::argumentArea.reset();
}

}  // namespace
