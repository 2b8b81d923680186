#include "nativeutils/UserFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "logging/Helpers.h"
#include "tests/support/Child.h"
#include "tests/support/FakeConsoleUser.h"
#include "tests/support/Home.h"

namespace {

constexpr uid_t kOtherUser = 4711;

// The lookup of this library and that of the logging library follow the same rules.
using Lookup = bool (*)(std::string&);

class UserFolderTest : public testing::TestWithParam<Lookup> {
 protected:
  UserFolderTest() {
    support::fakeConsoleUser.reset();
    support::switchCount = 0;
  }

  std::string userFolder() const {
    std::string path = "previous";
    EXPECT_TRUE(GetParam()(path));
    return path;
  }

  const support::PasswordDatabase users{support::passwordEntry(::geteuid(), "/home/self") +
                                        support::passwordEntry(kOtherUser, "/home/console")};
};

INSTANTIATE_TEST_SUITE_P(Both, UserFolderTest, testing::Values(utilGetUserFolderPath, tarn::getUserFolder),
                         [](const auto& each) {
                           return std::string(each.param == utilGetUserFolderPath ? "NativeUtils" : "Logging");
                         });

TEST_P(UserFolderTest, IsTheEffectiveUsersWithoutAConsoleUser) {
  EXPECT_EQ(userFolder(), "/home/self");
  EXPECT_EQ(support::switchCount, 0);
}

TEST_P(UserFolderTest, DoesNotSwitchForTheConsoleUser) {
  support::fakeConsoleUser = ::geteuid();
  EXPECT_EQ(userFolder(), "/home/self");
  EXPECT_EQ(support::switchCount, 0);
}

TEST_P(UserFolderTest, SwitchesToTheConsoleUserAndBack) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change its user id";
  userFolder();  // nss_wrapper opens its file before the switch
  support::fakeConsoleUser = kOtherUser;
  EXPECT_EQ(userFolder(), "/home/console");
  EXPECT_EQ(support::switchCount, 2);
  EXPECT_EQ(::geteuid(), 0u);
}

TEST_P(UserFolderTest, IsEmptyWithoutAPasswordEntry) {
  const support::PasswordDatabase empty("");
  EXPECT_EQ(userFolder(), "");
}

TEST(EffectiveUserFolderTest, IgnoresTheConsoleUser) {
  support::fakeConsoleUser = kOtherUser;
  std::string path;
  EXPECT_TRUE(util_getUserFolderPath(path));
  EXPECT_EQ(path, support::ownHome());
}

TEST(UnprivilegedUserFolderTest, OnlyTheLoggingLibraryFails) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change its user id";
  constexpr uid_t kUnprivileged = 65534;
  support::Child child([] {
    support::fakeConsoleUser = kOtherUser;
    std::string path = "previous";
    if (::setresuid(kUnprivileged, kUnprivileged, kUnprivileged) != 0) return 1;
    if (tarn::getUserFolder(path) || path != "previous") return 2;
    return utilGetUserFolderPath(path) && path != "previous" ? 0 : 3;
  });
  EXPECT_EQ(child.wait(), 0);
}

}  // namespace
