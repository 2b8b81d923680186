// The super-user's process writes the log of a user who tries to redirect it.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <ctime>
#include <filesystem>
#include <string>

#include "logging/LogTargetDefault.h"
#include "platform/Users.h"
#include "tests/support/Clock.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

constexpr uid_t kAnn = 4711;
constexpr std::size_t kMaxLogSize = 10485760;

uid_t ownerOf(const std::string& path) {
  struct stat object {};
  return ::lstat(path.c_str(), &object) == 0 ? object.st_uid : static_cast<uid_t>(-1);
}

class OtherUsersLogTest : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change its user id";
    std::filesystem::create_directory(home);
    std::filesystem::create_directory(roots);
    support::writeFile(precious, "precious");
    giveToAnn(home);
  }
  ~OtherUsersLogTest() override { target.onUnregisterTarget(); }

  static void giveToAnn(const std::string& path) { ASSERT_EQ(::lchown(path.c_str(), kAnn, kAnn), 0); }

  void linkTo(const std::string& object, const std::string& link) const {
    std::filesystem::create_symlink(object, link);
    giveToAnn(link);
  }

  bool setUp(const std::string& logs) {
    return target.setLogFile("Kelvo.log", logs.c_str()) && target.onRegisterTarget();
  }

  void log() { target.writeLog(tarn::FATAL, "", "", "", "", "", "", "text", nullptr, 0); }

  const support::TemporaryFolder folder;
  const std::string home = folder / "ann";
  const std::string roots = folder / "roots";
  const std::string precious = folder / "precious";
  const std::string file = home + "/Kelvo.log";
  const support::PasswordDatabase users{support::passwordEntry(0, support::ownHome()) +
                                        support::passwordEntry(kAnn, home)};
  tarn::LogTargetDefault target{"other"};
};

TEST_F(OtherUsersLogTest, BelongsToTheUser) {
  ASSERT_TRUE(setUp(home));
  log();
  EXPECT_EQ(ownerOf(file), kAnn);
  EXPECT_EQ(support::modeOf(file), 0666u);
  EXPECT_EQ(support::linesOf(file).size(), 1u);
}

TEST_F(OtherUsersLogTest, LinkIsRefused) {
  linkTo(precious, file);
  EXPECT_FALSE(setUp(home));
  log();
  EXPECT_EQ(support::contentsOf(precious), "precious");
}

TEST_F(OtherUsersLogTest, DanglingLinkIsRefused) {
  linkTo(roots + "/new", file);
  EXPECT_FALSE(setUp(home));
  EXPECT_TRUE(support::namesIn(roots).empty());
}

TEST_F(OtherUsersLogTest, HardLinkIsRefused) {
  std::filesystem::create_hard_link(precious, file);
  ::chmod(precious.c_str(), 0666);  // the user may write to the file
  EXPECT_FALSE(setUp(home));
  log();
  EXPECT_EQ(support::contentsOf(precious), "precious");
}

TEST_F(OtherUsersLogTest, FileOfAThirdUserIsRefused) {
  support::writeFile(file, "");
  ::chmod(file.c_str(), 0666);
  ASSERT_EQ(::chown(file.c_str(), kAnn + 1, kAnn + 1), 0);
  EXPECT_FALSE(setUp(home));
}

TEST_F(OtherUsersLogTest, LinkedFolderIsRefused) {
  linkTo(roots, home + "/logs");
  EXPECT_FALSE(setUp(home + "/logs"));
  EXPECT_TRUE(support::namesIn(roots).empty());
}

TEST_F(OtherUsersLogTest, LogFolderIsTheUsers) {
  ASSERT_TRUE(platform::makeLogsFolder(home));
  EXPECT_EQ(ownerOf(home + "/Library"), kAnn);
  EXPECT_EQ(ownerOf(home + "/Library/Logs"), kAnn);
}

TEST_F(OtherUsersLogTest, LogFolderIsNotCreatedThroughALink) {
  linkTo(roots, home + "/Library");
  EXPECT_FALSE(platform::makeLogsFolder(home));
  EXPECT_TRUE(support::namesIn(roots).empty());
}

TEST_F(OtherUsersLogTest, ArchiveDoesNotFollowLinks) {
  support::writeFile(file, std::string(kMaxLogSize, '\n'));
  giveToAnn(file);
  const std::time_t now = support::currentSecond();
  for (std::time_t second = now; second < now + 4; ++second) {
    char stamp[64];
    std::strftime(stamp, sizeof stamp, "/Kelvo %m-%d-%Y %H-%M-%S.log", std::localtime(&second));
    linkTo(precious, home + stamp);
  }
  (void)setUp(home);
  EXPECT_EQ(std::filesystem::file_size(precious), 8u);
}

TEST_F(OtherUsersLogTest, RightsEndWithTheCall) {
  ASSERT_TRUE(setUp(home));
  support::writeFile(roots + "/after", "");
  EXPECT_EQ(ownerOf(roots + "/after"), 0u);
}

TEST_F(OtherUsersLogTest, SuperUsersFolderIsUsedAsBefore) {
  std::filesystem::create_directory(home + "/logs");
  ASSERT_TRUE(setUp(home + "/logs"));
  EXPECT_EQ(ownerOf(home + "/logs/Kelvo.log"), 0u);
}

}  // namespace
