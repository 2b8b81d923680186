#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "logging/Helpers.h"
#include "platform/Users.h"
#include "tests/macos/doubles/Users.h"
#include "tests/macos/platform/PlatformTest.h"
#include "tests/support/Home.h"

// Replaces the function of the C library.
extern "C" int seteuid(uid_t user) noexcept {
  if (const int error = doubles::statusOf("seteuid")) {
    errno = error;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_setresuid, static_cast<uid_t>(-1), user, static_cast<uid_t>(-1)));
}

namespace {

constexpr uid_t kOtherUser = 4711;

class ConsoleUserTest : public macos_test::PlatformTest {
 protected:
  ConsoleUserTest() { doubles::consoleUser.reset(); }
};

TEST_F(ConsoleUserTest, IsMissingIfTheSystemReportsNone) {
  EXPECT_EQ(platform::consoleUser(), std::nullopt);
}

TEST_F(ConsoleUserTest, IsMissingAtTheLoginWindow) {
  doubles::consoleUser = {"loginwindow", 0};
  EXPECT_EQ(platform::consoleUser(), std::nullopt);
}

TEST_F(ConsoleUserTest, IsReportedByUserIdWhateverTheName) {
  for (const char* name : {"ann", "", "loginwindows", "loginwindo", "Jos\xc3\xa9"}) {
    doubles::consoleUser = {name, kOtherUser};
    EXPECT_EQ(platform::consoleUser(), kOtherUser) << name;
  }
}

bool getHomeFolder(std::string& path) {
  path = platform::homeFolderOfConsoleUser();
  return true;
}

// The two functions that look up the home folder of the console user.
class ConsoleFolderTest : public ConsoleUserTest, public testing::WithParamInterface<bool (*)(std::string&)> {
 protected:
  static std::string lookUp() {
    std::string path = "previous";
    EXPECT_TRUE(GetParam()(path));
    return path;
  }

  // Sets another console user. Returns false if this process may not become that user.
  static bool setOtherConsoleUser() {
    lookUp();  // opens the user database, which the other user may not be allowed to open
    doubles::consoleUser = {"ann", kOtherUser};
    return ::geteuid() == 0;
  }

  const support::PasswordDatabase users{support::passwordEntry(::geteuid(), "/home/self") +
                                        support::passwordEntry(kOtherUser, "/home/console")};
};

INSTANTIATE_TEST_SUITE_P(Both, ConsoleFolderTest, testing::Values(getHomeFolder, tarn::getUserFolder),
                         [](const auto& each) {
                           return std::string(each.param == getHomeFolder ? "Platform" : "Logging");
                         });

// A failing `seteuid` shows that the user is not switched.
TEST_P(ConsoleFolderTest, WithoutAConsoleUserIsTheOwnFolder) {
  doubles::failCall("seteuid", EPERM);
  EXPECT_EQ(lookUp(), "/home/self");
}

TEST_P(ConsoleFolderTest, OfTheEffectiveUserNeedsNoSwitch) {
  doubles::failCall("seteuid", EPERM);
  doubles::consoleUser = {"self", ::geteuid()};
  EXPECT_EQ(lookUp(), "/home/self");
}

TEST_P(ConsoleFolderTest, IsThatOfTheConsoleUser) {
  if (!setOtherConsoleUser()) GTEST_SKIP() << "only the super-user may become another user";
  EXPECT_EQ(lookUp(), "/home/console");
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_P(ConsoleFolderTest, RestoresTheUserIfNoFolderIsFound) {
  if (!setOtherConsoleUser()) GTEST_SKIP() << "only the super-user may become another user";
  doubles::failCall("FSFindFolder", -43);
  EXPECT_EQ(lookUp(), "");
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_P(ConsoleFolderTest, RestoresTheUserIfNoPathIsMade) {
  if (!setOtherConsoleUser()) GTEST_SKIP() << "only the super-user may become another user";
  doubles::failCall("FSRefMakePath", -2110);
  EXPECT_EQ(lookUp(), "");
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_F(ConsoleUserTest, LoggingLibraryFailsIfTheSwitchFails) {
  doubles::consoleUser = {"ann", ::geteuid() + 1};
  doubles::failCall("seteuid", EPERM);
  std::string path = "previous";
  EXPECT_FALSE(tarn::getUserFolder(path));
  EXPECT_EQ(path, "previous");
}

TEST_F(ConsoleUserTest, PlatformUsesOwnFolderIfTheSwitchFails) {
  doubles::consoleUser = {"ann", ::geteuid() + 1};
  doubles::failCall("seteuid", EPERM);
  EXPECT_EQ(platform::homeFolderOfConsoleUser(), support::ownHome());
}

}  // namespace
