#include "nativeutils/UserFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "logging/Helpers.h"
#include "tests/support/Child.h"
#include "tests/support/FakeConsoleUser.h"
#include "tests/support/Home.h"

namespace {

constexpr uid_t somebodyElse = 4711;

// The library's own look-up and the logging library's, which have the same rules.
using LookUp = bool (*)(std::string&);

class UserFolderTest : public testing::TestWithParam<LookUp> {
 protected:
  UserFolderTest() {
    support::fakeConsoleUser.reset();
    support::switches = 0;
  }

  std::string lookedUp() const {
    std::string path = "former";
    EXPECT_TRUE(GetParam()(path));
    return path;
  }

  const support::PasswordDatabase users{support::passwordEntry(::geteuid(), "/home/self") +
                                        support::passwordEntry(somebodyElse, "/home/console")};
};

INSTANTIATE_TEST_SUITE_P(Both, UserFolderTest, testing::Values(utilGetUserFolderPath, tarn::getUserFolder));

TEST_P(UserFolderTest, WithNobodyAtTheConsoleItIsTheEffectiveUsers) {
  EXPECT_EQ(lookedUp(), "/home/self");
  EXPECT_EQ(support::switches, 0);
}

TEST_P(UserFolderTest, ForTheUserAtTheConsoleTheUserIsNeverSwitched) {
  support::fakeConsoleUser = ::geteuid();
  EXPECT_EQ(lookedUp(), "/home/self");
  EXPECT_EQ(support::switches, 0);
}

TEST_P(UserFolderTest, ForAnotherUserAtTheConsoleItIsThatUsersAndTheProcessIsItselfAgain) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may become another user";
  lookedUp();  // the wrapper opens its file while it may
  support::fakeConsoleUser = somebodyElse;
  EXPECT_EQ(lookedUp(), "/home/console");
  EXPECT_EQ(support::switches, 2);
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_P(UserFolderTest, WithoutAnEntryInThePasswordDatabaseItIsEmpty) {
  const support::PasswordDatabase nobody("");
  EXPECT_EQ(lookedUp(), "");
}

TEST(EffectiveUsersFolder, DoesNotAskWhoIsAtTheConsole) {
  support::fakeConsoleUser = somebodyElse;
  std::string path;
  EXPECT_TRUE(util_getUserFolderPath(path));
  EXPECT_EQ(path, support::ownHome());
}

TEST(WhoMayNotSwitch, GetsNoFolderFromTheLoggingLibraryAndItsOwnFromTheOther) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user can become somebody who may not switch";
  constexpr uid_t nobody = 65534;
  support::Child powerless([] {
    support::fakeConsoleUser = somebodyElse;
    std::string path = "former";
    if (::setresuid(nobody, nobody, nobody) != 0) return 1;
    if (tarn::getUserFolder(path) || path != "former") return 2;
    return utilGetUserFolderPath(path) && path != "former" ? 0 : 3;
  });
  EXPECT_EQ(powerless.wait(), 0);
}

}  // namespace
