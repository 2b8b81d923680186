#include "platform/Users.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/Child.h"
#include "tests/support/FakeLogin.h"
#include "tests/support/Home.h"

namespace {

using Groups = std::vector<gid_t>;

class GroupsTest : public testing::Test {
 protected:
  GroupsTest() { support::fakeLogin = "tester"; }
  ~GroupsTest() override { support::fakeLogin.clear(); }

  // A line of the group database.
  static std::string group(gid_t number, const std::string& members) {
    return "group" + std::to_string(number) + ":x:" + std::to_string(number) + ":" + members + "\n";
  }
};

TEST_F(GroupsTest, AnUnknownGroupHasNoName) {
  const support::GroupDatabase groups(group(4711, ""));
  EXPECT_EQ(platform::nameOfGroup(4711), "group4711");
  EXPECT_EQ(platform::nameOfGroup(4712), "");
}

TEST_F(GroupsTest, FindsTheNameOfALargeGroup) {
  std::string members = "first";
  for (int i = 0; i < 5000; ++i)
    members += ",member" + std::to_string(i);
  const support::GroupDatabase groups(group(4711, members));
  EXPECT_EQ(platform::nameOfGroup(4711), "group4711");
}

TEST_F(GroupsTest, AcceptsAVeryLongMemberName) {
  const support::GroupDatabase groups(group(4711, std::string(300000, 'm')));
  EXPECT_EQ(platform::nameOfGroup(4711), "group4711");
}

TEST_F(GroupsTest, StartsWithTheEffectiveNotTheRealGroup) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can change its group";
  const support::GroupDatabase groups(group(4711, "") + group(5001, "tester"));
  support::Child other([] {
    if (::setresgid(4712, 4711, 4713) != 0) return 2;
    return platform::groupsOfLogin(16) == Groups{4711, 5001} ? 0 : 1;
  });
  EXPECT_EQ(other.wait(), 0);
}

TEST_F(GroupsTest, ReturnsAtMostTheRequestedNumberOfGroups) {
  std::string many;
  for (gid_t number = 5001; number < 5101; ++number)
    many += group(number, "tester");
  const support::GroupDatabase groups(many);
  EXPECT_EQ(platform::groupsOfLogin(3), (Groups{::getegid(), 5001, 5002}));
  EXPECT_EQ(platform::groupsOfLogin(1000).size(), 101u);
  EXPECT_EQ(platform::groupsOfLogin(0), Groups{});
}

}  // namespace
