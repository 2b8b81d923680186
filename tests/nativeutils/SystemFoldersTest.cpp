#include <fnmatch.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Environment.h"
#include "tests/support/FakeConsoleUser.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Mounts.h"

namespace {

using support::Variable;
using Lines = std::vector<std::string>;

class SystemFoldersTest : public nativeutils_test::LoggedTest {
 protected:
  SystemFoldersTest() { support::fakeConsoleUser.reset(); }

  // Returns the result of a query, which must succeed and log nothing.
  std::string resultOf(bool (*query)(std::string&)) {
    std::string path = "previous";
    EXPECT_TRUE(query(path));
    EXPECT_EQ(logged(), Lines{});
    return path;
  }

  // Calls `utilGetUserAppDataFolder`, which must fail. Returns what was logged.
  Lines logOf(const std::string& dataHome) {
    const Variable variable("XDG_DATA_HOME", dataHome);
    std::string path = "previous";
    EXPECT_FALSE(utilGetUserAppDataFolder(path));
    EXPECT_EQ(path, "previous");
    return logged();
  }

  static std::string warning(int error) {
    return "WARN Failed in finding location information  in utilGetUserAppDataFolder error:" + std::to_string(error);
  }

  const support::TemporaryFolder folder;
};

TEST_F(SystemFoldersTest, CreatesTheDataFolderWithMode0700) {
  const Variable variable("XDG_DATA_HOME", folder / "a/data");
  EXPECT_EQ(resultOf(utilGetUserAppDataFolder), folder / "a/data");
  EXPECT_EQ(support::modeOf(folder / "a/data"), 0700u);
  EXPECT_EQ(support::modeOf(folder / "a"), 0700u);
}

TEST_F(SystemFoldersTest, DataFolderDefaultsToTheHomeFolder) {
  const std::string expected = support::ownHome() + "/.local/share";
  for (const auto& value :
       {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("relative/data")}) {
    std::filesystem::remove_all(support::ownHome() + "/.local");
    const Variable variable("XDG_DATA_HOME", value);
    EXPECT_EQ(resultOf(utilGetUserAppDataFolder), expected);
    EXPECT_TRUE(std::filesystem::is_directory(expected));
  }
  std::filesystem::remove_all(support::ownHome() + "/.local");
}

TEST_F(SystemFoldersTest, ExistingDataFolderKeepsItsMode) {
  ASSERT_EQ(::mkdir((folder / "data").c_str(), 0755), 0);
  const unsigned mode = support::modeOf(folder / "data");
  const Variable variable("XDG_DATA_HOME", folder / "data/");
  EXPECT_EQ(resultOf(utilGetUserAppDataFolder), folder / "data/");
  EXPECT_EQ(support::modeOf(folder / "data"), mode);
}

TEST_F(SystemFoldersTest, WarnsIfDataFolderCannotBeCreated) {
  support::writeFile(folder / "file", "");
  EXPECT_EQ(logOf(folder / "file"), Lines{warning(ENOTDIR)});
  forget();
  EXPECT_EQ(logOf(folder / "file/data"), Lines{warning(ENOTDIR)});
  forget();
  EXPECT_EQ(logOf("/proc/no-such/data"), Lines{warning(ENOENT)});
}

TEST_F(SystemFoldersTest, WarnsIfDataFolderNameIsTooLong) {
  EXPECT_EQ(logOf(folder / std::string(300, 'n')), Lines{warning(ENAMETOOLONG)});
}

TEST_F(SystemFoldersTest, WarnsIfDataFolderPathIsTooLong) {
  std::string deep = folder.path();
  while (deep.size() <= 1023)
    deep += "/" + std::string(100, 'n');
  EXPECT_EQ(logOf(deep),
            Lines{"WARN Failed in path conversion in utilGetUserAppDataFolder error:" + std::to_string(ENAMETOOLONG)});
}

TEST_F(SystemFoldersTest, DataFolderPathMayHave1023Bytes) {
  std::string deep = folder.path();
  while (deep.size() <= 1000)
    deep += "/" + std::string(10, 'n');
  deep += "/" + std::string(1022 - deep.size(), 'n');
  const Variable variable("XDG_DATA_HOME", deep);
  EXPECT_EQ(resultOf(utilGetUserAppDataFolder).size(), 1023u);
}

TEST_F(SystemFoldersTest, WarnsIfDataFolderIsNotUtf8) {
  EXPECT_EQ(logOf(folder / "caf\xe9"), Lines{"WARN Error in allocating memory in utilGetUserAppDataFolder"});
}

TEST_F(SystemFoldersTest, WarnsIfTheUserHasNoHomeFolder) {
  const Variable variable("XDG_DATA_HOME", std::nullopt);
  {
    const support::PasswordDatabase empty("");
    std::string path = "previous";
    EXPECT_FALSE(utilGetUserAppDataFolder(path));
    EXPECT_EQ(path, "previous");
  }
  EXPECT_EQ(logged(), Lines{warning(ENOENT)});
}

TEST_F(SystemFoldersTest, ReturnsTheFoldersOfTheSystem) {
  EXPECT_EQ(resultOf(utilGetSystemApplicationSupportFolderPath), "/usr/share");
  EXPECT_EQ(resultOf(utilGetQRBPath), "/usr/local/share/Orvane");
  EXPECT_EQ(resultOf(utilGetApplicationsPath), "/opt");
}

TEST_F(SystemFoldersTest, InstallPathEndsInASlash) {
  if (!std::filesystem::is_directory("/opt")) GTEST_SKIP() << "/opt does not exist";
  EXPECT_EQ(resultOf(utilGetVormInstallPath), "/opt/Orvane Application Manager/");
}

TEST_F(SystemFoldersTest, ParentOfAPathNeedNotExist) {
  std::string parent = "previous";
  EXPECT_TRUE(utilGetUSfPathFromKelvoPath("/no/such/Kelvo/", parent));
  EXPECT_EQ(parent, "/no/such");
  EXPECT_TRUE(utilGetUSfPathFromKelvoPath("Kelvo", parent));
  EXPECT_EQ(parent, "");
  EXPECT_TRUE(utilGetUSfPathFromKelvoPath("/", parent));
  EXPECT_EQ(parent, "/");
}

// `utilGetUSFPath` for a user with a temporary home folder, without the super-user's capabilities.
class SharedFolderTest : public SystemFoldersTest {
 protected:
  enum class TmpFolder { kWritable, kReadOnly };

  // Calls `utilGetUSFPath` in a child process, which must log nothing. No value without the permission to mount.
  std::optional<std::string> sharedFolder(TmpFolder tmp = TmpFolder::kWritable) const {
    const support::Shared<std::array<char, 200>> shared;
    const auto query = [&] {
      if (!support::dropCapabilities()) return 1;
      std::string path = "previous";
      const bool found = utilGetUSFPath(path);
      ((found ? "" : "(false) ") + path).copy(shared->data(), shared->size() - 1);
      return 0;
    };
    const int result = withHomeFolder([&] {
      if (tmp == TmpFolder::kWritable) return support::Child(query).wait();
      return support::withOwnMounts([&] { return makeTmpReadOnly() ? query() : support::kImpossible; });
    });
    EXPECT_EQ(logged(), Lines{});
    if (result == support::kImpossible) return std::nullopt;
    EXPECT_EQ(result, 0);
    return shared->data();
  }

  static void makeFolder(const std::string& path, mode_t mode) {
    std::filesystem::create_directories(path);
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
  }

  // Whether `path` is a folder for shared files below a UUID in `parent`.
  static bool isNewFolderIn(const std::string& parent, const std::string& path) {
    return ::fnmatch((parent + "/*-*-*-*-*/Orvane/TARN/Kelvo/").c_str(), path.c_str(), FNM_PATHNAME) == 0;
  }

  const std::string home = folder / "home";

 private:
  int withHomeFolder(const std::function<int()>& body) const {
    const std::string id = std::to_string(::geteuid());
    const support::PasswordDatabase user("tester:x:" + id + ":" + id + "::" + home + ":/bin/sh\n");
    return body();
  }

  // Makes /tmp read-only, except the home folder if it is in /tmp.
  bool makeTmpReadOnly() const {
    const auto bind = [](const char* path) { return ::mount(path, path, nullptr, MS_BIND | MS_REC, nullptr) == 0; };
    return bind(home.c_str()) && bind("/tmp") &&
           ::mount(nullptr, "/tmp", nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
  }
};

TEST_F(SharedFolderTest, ReturnsTheFirstIfHomeIsWritable) {
  makeFolder(home, 0700);
  EXPECT_EQ(sharedFolder(), home + "/Applications/Orvane/TARN/Kelvo/");
  EXPECT_EQ(support::namesIn(home), Lines{}) << "the function must not create folders";
}

TEST_F(SharedFolderTest, ReturnsTheSecondIfApplicationsIsReadOnly) {
  makeFolder(home, 0700);
  makeFolder(home + "/Applications", 0500);
  EXPECT_EQ(sharedFolder(), home + "/Library/Application Support/Orvane/TARN/Kelvo/");
}

TEST_F(SharedFolderTest, ReturnsTheSecondIfApplicationsIsAFile) {
  makeFolder(home, 0700);
  support::writeFile(home + "/Applications", "");
  EXPECT_EQ(sharedFolder(), home + "/Library/Application Support/Orvane/TARN/Kelvo/");
}

TEST_F(SharedFolderTest, UsesTmpIfHomeIsReadOnly) {
  makeFolder(home, 0500);
  const std::string first = sharedFolder().value();
  EXPECT_TRUE(isNewFolderIn("/tmp", first)) << first;
  EXPECT_NE(sharedFolder(), first);
  EXPECT_FALSE(std::filesystem::exists(first));
}

TEST_F(SharedFolderTest, PrefersTmpToTheHomeFolder) {
  makeFolder(home + "/Applications", 0500);
  makeFolder(home + "/Library", 0500);
  const std::string path = sharedFolder().value();
  EXPECT_TRUE(isNewFolderIn("/tmp", path)) << path;
}

TEST_F(SharedFolderTest, UsesHomeIfTmpIsReadOnly) {
  makeFolder(home + "/Applications", 0500);
  makeFolder(home + "/Library", 0500);
  const auto path = sharedFolder(TmpFolder::kReadOnly);
  if (!path) GTEST_SKIP() << "no permission to mount";
  EXPECT_TRUE(isNewFolderIn(home, *path)) << *path;
  EXPECT_NE(sharedFolder(TmpFolder::kReadOnly), path);
  EXPECT_EQ(support::namesIn(home), (Lines{"Applications", "Library"})) << "the function must not create folders";
}

TEST_F(SharedFolderTest, FailsIfNoFolderCanBeCreated) {
  makeFolder(home, 0500);
  const auto path = sharedFolder(TmpFolder::kReadOnly);
  if (!path) GTEST_SKIP() << "no permission to mount";
  EXPECT_EQ(path, "(false) previous");
}

}  // namespace
