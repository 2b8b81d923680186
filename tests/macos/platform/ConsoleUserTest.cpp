#include "tests/macos/doubles/ConsoleUser.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "logging/Helpers.h"
#include "platform/Users.h"
#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Home.h"

// Takes the place of the C library's.
extern "C" int seteuid(uid_t user) noexcept {
  doubles::noteCall("seteuid " + std::to_string(user));
  if (const int error = doubles::statusOf("seteuid")) {
    errno = error;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_setresuid, static_cast<uid_t>(-1), user, static_cast<uid_t>(-1)));
}

namespace {

using testing::ElementsAre;

constexpr uid_t somebodyElse = 4711;
const doubles::ConsoleUser ann{"ann", somebodyElse};

class ConsoleUserTest : public macos_test::SystemTest {
 protected:
  ConsoleUserTest() { doubles::consoleUser.reset(); }
};

TEST_F(ConsoleUserTest, IsNobodyWhenTheSystemNamesNobody) {
  EXPECT_EQ(platform::consoleUser(), std::nullopt);
}

TEST_F(ConsoleUserTest, IsNobodyAtTheLoginWindow) {
  doubles::consoleUser = {"loginwindow", 0};
  EXPECT_EQ(platform::consoleUser(), std::nullopt);
}

TEST_F(ConsoleUserTest, IsKnownByTheNumber) {
  for (const char* name : {"ann", "", "loginwindows", "loginwindo", "Jos\xc3\xa9"}) {
    doubles::consoleUser = {name, somebodyElse};
    EXPECT_EQ(platform::consoleUser(), somebodyElse) << name;
  }
}

bool getHomeFolder(std::string& path) {
  path = platform::homeFolderOfConsoleUser();
  return true;
}

// The library's own look-up and the logging library's, which have the same rules.
class ConsoleFolderTest : public ConsoleUserTest, public testing::WithParamInterface<bool (*)(std::string&)> {
 protected:
  // Also sees to it that the database of users has been opened by somebody who may.
  std::string lookedUp() const {
    std::string path = "former";
    EXPECT_TRUE(GetParam()(path));
    return path;
  }

  // What follows is done in another's name, if this process may have one.
  bool goesToSomebodyElse() {
    lookedUp();
    (void)doubles::takenCalls();
    doubles::consoleUser = ann;
    return ::geteuid() == 0;
  }

  const support::PasswordDatabase users{support::passwordEntry(::geteuid(), "/home/self") +
                                        support::passwordEntry(somebodyElse, "/home/console")};
};

INSTANTIATE_TEST_SUITE_P(Both, ConsoleFolderTest, testing::Values(getHomeFolder, tarn::getUserFolder));

TEST_P(ConsoleFolderTest, WithNobodyAtTheConsoleNobodyIsSwitchedTo) {
  EXPECT_EQ(lookedUp(), "/home/self");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("SCDynamicStoreCopyConsoleUser", "FSFindFolder -32763 root create",
                                                 "FSRefMakePath /home/self 1024"));
}

TEST_P(ConsoleFolderTest, ForTheEffectiveUserAtTheConsoleNobodyIsSwitchedTo) {
  doubles::consoleUser = {"self", ::geteuid()};
  EXPECT_EQ(lookedUp(), "/home/self");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("SCDynamicStoreCopyConsoleUser", "FSFindFolder -32763 root create",
                                                 "FSRefMakePath /home/self 1024"));
}

TEST_P(ConsoleFolderTest, IsFoundInTheNameOfTheUserAtTheConsole) {
  if (!goesToSomebodyElse()) GTEST_SKIP() << "only the super-user may become another user";
  EXPECT_EQ(lookedUp(), "/home/console");
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("SCDynamicStoreCopyConsoleUser", "seteuid 4711", "FSFindFolder -32763 root create",
                          "FSRefMakePath /home/console 1024", "seteuid 0"));
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_P(ConsoleFolderTest, TheProcessIsItselfAgainWhenNoFolderIsFound) {
  if (!goesToSomebodyElse()) GTEST_SKIP() << "only the super-user may become another user";
  doubles::failCall("FSFindFolder", -43);
  EXPECT_EQ(lookedUp(), "");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("SCDynamicStoreCopyConsoleUser", "seteuid 4711",
                                                 "FSFindFolder -32763 root create", "seteuid 0"));
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_P(ConsoleFolderTest, TheProcessIsItselfAgainWhenNoPathIsMade) {
  if (!goesToSomebodyElse()) GTEST_SKIP() << "only the super-user may become another user";
  doubles::failCall("FSRefMakePath", -2110);
  EXPECT_EQ(lookedUp(), "");
  EXPECT_THAT(doubles::takenCalls(), testing::Contains("seteuid 0"));
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_F(ConsoleUserTest, WhoMayNotSwitchGetsNoFolderFromTheLoggingLibrary) {
  doubles::consoleUser = {"ann", ::geteuid() + 1};
  doubles::failCall("seteuid", EPERM);
  std::string path = "former";
  EXPECT_FALSE(tarn::getUserFolder(path));
  EXPECT_EQ(path, "former");
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("SCDynamicStoreCopyConsoleUser", "seteuid " + std::to_string(::geteuid() + 1)));
}

TEST_F(ConsoleUserTest, WhoMayNotSwitchGetsTheOwnFolderFromTheOther) {
  const uid_t self = ::geteuid();
  doubles::consoleUser = {"ann", self + 1};
  doubles::failCall("seteuid", EPERM);
  const std::string path = platform::homeFolderOfConsoleUser();
  EXPECT_EQ(path, support::ownHome());
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("SCDynamicStoreCopyConsoleUser", "seteuid " + std::to_string(self + 1),
                                                 "FSFindFolder -32763 root create", "FSRefMakePath " + path + " 1024"));
}

}  // namespace
