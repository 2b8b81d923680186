#include "platform/Machine.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <thread>

#include "logging/Helpers.h"
#include "tests/macos/platform/PlatformTest.h"
#include "tests/support/Child.h"

namespace {

using platform::VersionPart;

using SystemVersionTest = macos_test::PlatformTest;
using ThreadIdTest = macos_test::PlatformTest;

TEST_F(SystemVersionTest, HasThreeParts) {
  const auto version = platform::systemVersion();
  ASSERT_TRUE(version);
  EXPECT_EQ(version->major, 10);
  EXPECT_EQ(version->minor, 15);
  EXPECT_EQ(version->bugFix, 7);
}

TEST_F(SystemVersionTest, ReportsEachPartAlone) {
  EXPECT_EQ(platform::systemVersionPart(VersionPart::kMinor), 15);
  EXPECT_EQ(platform::systemVersionPart(VersionPart::kBugFix), 7);
  EXPECT_EQ(platform::systemVersionPart(VersionPart::kMajor), 10);
}

TEST_F(SystemVersionTest, IsMissingIfAPartIsMissing) {
  for (const char* call : {"Gestalt sys1", "Gestalt sys2", "Gestalt sys3"}) {
    doubles::failNextCall(call, -5551);
    EXPECT_FALSE(platform::systemVersion()) << call;
    std::array<int, 3> parts{-1, -1, -1};
    doubles::failNextCall(call, -5551);
    EXPECT_FALSE(tarn::utilGetCurrentOSVersion(parts[0], parts[1], parts[2])) << call;
    EXPECT_THAT(parts, testing::Each(-1)) << call;
  }
}

std::uint64_t systemThreadId() {
  return static_cast<std::uint64_t>(::syscall(SYS_gettid));
}

TEST_F(ThreadIdTest, IsThatOfTheSystem) {
  EXPECT_EQ(platform::currentThreadId(), systemThreadId());
  std::thread([] { EXPECT_EQ(platform::currentThreadId(), systemThreadId()); }).join();
}

TEST_F(ThreadIdTest, ChangesAfterAFork) {
  (void)platform::currentThreadId();
  EXPECT_EQ(support::inChild([] { return platform::currentThreadId() == systemThreadId() ? 0 : 1; }), 0);
}

}  // namespace
