#include "platform/Machine.h"

#include <filesystem>

#include "tests/macos/doubles/MainBundle.h"
#include "tests/macos/platform/PlatformTest.h"

namespace {

using platform::Architecture;

class BundleTest : public macos_test::PlatformTest {
 protected:
  BundleTest() { doubles::mainBundle = {}; }
};

TEST_F(BundleTest, OfAProgramIsItsFolder) {
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_EQ(platform::executablePath(), program.string());
  EXPECT_EQ(platform::bundlePath(), program.parent_path().string());
}

TEST_F(BundleTest, OfAnApplicationIsItsAppFolder) {
  doubles::mainBundle.path = "/Applications/\xC3\x84 Tool.app";
  doubles::mainBundle.executable = "/Applications/\xC3\x84 Tool.app/Contents/MacOS/Tool";
  EXPECT_EQ(platform::bundlePath(), "/Applications/\xC3\x84 Tool.app");
  EXPECT_EQ(platform::executablePath(), "/Applications/\xC3\x84 Tool.app/Contents/MacOS/Tool");
}

TEST_F(BundleTest, ReportsTheArchitecturesOfTheExecutable) {
  doubles::mainBundle.architectures = {0x7, 0x1000007, 0x12, 0x1000012, 0x100000C};
  EXPECT_EQ(platform::executableArchitectures(),
            (std::vector{Architecture::kX86, Architecture::kX64, Architecture::kPpc, Architecture::kPpc64,
                         Architecture::kOther}));
}

TEST_F(BundleTest, IsEmptyIfTheSystemReportsNothing) {
  for (const char* call : {"bundlePath", "executablePath", "executableArchitectures"})
    doubles::failCall(call);
  EXPECT_EQ(platform::bundlePath(), "");
  EXPECT_EQ(platform::executablePath(), "");
  EXPECT_TRUE(platform::executableArchitectures().empty());
}

}  // namespace
