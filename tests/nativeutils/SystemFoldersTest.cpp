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
#include "tests/support/Child.h"
#include "tests/support/Environment.h"
#include "tests/support/FakeConsoleUser.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Mounts.h"
#include "tests/support/Powers.h"

namespace {

using support::Variable;
using Lines = std::vector<std::string>;

class SystemFoldersTest : public nativeutils_test::LoggedTest {
 protected:
  SystemFoldersTest() { support::fakeConsoleUser.reset(); }

  // Of a query that must succeed and log nothing.
  std::string answerOf(bool (*query)(std::string&)) {
    std::string path = "former";
    EXPECT_TRUE(query(path));
    EXPECT_EQ(logged(), Lines{});
    return path;
  }

  // What the folder of the user's data says when it cannot be had.
  Lines failing(const std::string& dataHome) {
    const Variable chosen("XDG_DATA_HOME", dataHome);
    std::string path = "former";
    EXPECT_FALSE(utilGetUserAppDataFolder(path));
    EXPECT_EQ(path, "former");
    return logged();
  }

  static std::string warning(int error) {
    return "WARN Failed in finding location information  in utilGetUserAppDataFolder error:" + std::to_string(error);
  }

  const support::TemporaryFolder folder;
};

TEST_F(SystemFoldersTest, TheUsersDataIsWhereTheEnvironmentSaysAndIsMadeForTheUserAlone) {
  const Variable chosen("XDG_DATA_HOME", folder / "a/data");
  EXPECT_EQ(answerOf(utilGetUserAppDataFolder), folder / "a/data");
  EXPECT_EQ(support::modeOf(folder / "a/data"), 0700u);
  EXPECT_EQ(support::modeOf(folder / "a"), 0700u);
}

TEST_F(SystemFoldersTest, TheUsersDataIsBelowTheHomeFolderOtherwise) {
  const std::string usual = support::ownHome() + "/.local/share";
  for (const auto& value :
       {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("relative/data")}) {
    std::filesystem::remove_all(support::ownHome() + "/.local");
    const Variable chosen("XDG_DATA_HOME", value);
    EXPECT_EQ(answerOf(utilGetUserAppDataFolder), usual);
    EXPECT_TRUE(std::filesystem::is_directory(usual));
  }
  std::filesystem::remove_all(support::ownHome() + "/.local");
}

TEST_F(SystemFoldersTest, AnExistingFolderOfDataKeepsItsMode) {
  ASSERT_EQ(::mkdir((folder / "data").c_str(), 0755), 0);
  const unsigned former = support::modeOf(folder / "data");
  const Variable chosen("XDG_DATA_HOME", folder / "data/");
  EXPECT_EQ(answerOf(utilGetUserAppDataFolder), folder / "data/");
  EXPECT_EQ(support::modeOf(folder / "data"), former);
}

TEST_F(SystemFoldersTest, AFolderOfDataThatCannotBeMadeIsAWarning) {
  support::writeFile(folder / "file", "");
  EXPECT_EQ(failing(folder / "file"), Lines{warning(ENOTDIR)});
  forget();
  EXPECT_EQ(failing(folder / "file/data"), Lines{warning(ENOTDIR)});
  forget();
  EXPECT_EQ(failing("/proc/no-such/data"), Lines{warning(ENOENT)});
}

TEST_F(SystemFoldersTest, AFolderOfDataWhoseNameIsTooLongIsAWarning) {
  EXPECT_EQ(failing(folder / std::string(300, 'n')), Lines{warning(ENAMETOOLONG)});
}

TEST_F(SystemFoldersTest, AFolderOfDataWhosePathIsTooLongIsAnotherWarning) {
  std::string deep = folder.path();
  while (deep.size() <= 1023)
    deep += "/" + std::string(100, 'n');
  EXPECT_EQ(failing(deep),
            Lines{"WARN Failed in path conversion in utilGetUserAppDataFolder error:" + std::to_string(ENAMETOOLONG)});
}

TEST_F(SystemFoldersTest, APathOf1023BytesIsTheLongest) {
  std::string deep = folder.path();
  while (deep.size() <= 1000)
    deep += "/" + std::string(10, 'n');
  deep += "/" + std::string(1022 - deep.size(), 'n');
  const Variable chosen("XDG_DATA_HOME", deep);
  EXPECT_EQ(answerOf(utilGetUserAppDataFolder).size(), 1023u);
}

TEST_F(SystemFoldersTest, AFolderOfDataThatIsNotUtf8IsAThirdWarning) {
  EXPECT_EQ(failing(folder / "caf\xe9"), Lines{"WARN Error in allocating memory in utilGetUserAppDataFolder"});
}

TEST_F(SystemFoldersTest, AUserWithoutAHomeFolderHasNoFolderOfData) {
  const Variable chosen("XDG_DATA_HOME", std::nullopt);
  {
    const support::PasswordDatabase nobody("");
    std::string path = "former";
    EXPECT_FALSE(utilGetUserAppDataFolder(path));
    EXPECT_EQ(path, "former");
  }
  EXPECT_EQ(logged(), Lines{warning(ENOENT)});
}

TEST_F(SystemFoldersTest, TheOtherFoldersAreThoseOfTheSystem) {
  EXPECT_EQ(answerOf(utilGetSystemApplicationSupportFolderPath), "/usr/share");
  EXPECT_EQ(answerOf(utilGetQRBPath), "/usr/local/share/Orvane");
  EXPECT_EQ(answerOf(utilGetApplicationsPath), "/opt");
}

TEST_F(SystemFoldersTest, TheInstallPathEndsInASlash) {
  if (!std::filesystem::is_directory("/opt")) GTEST_SKIP() << "no /opt, and it may not be made here";
  EXPECT_EQ(answerOf(utilGetVormInstallPath), "/opt/Orvane Application Manager/");
}

TEST_F(SystemFoldersTest, TheFolderOfAPathIsAMatterOfText) {
  std::string folderOf = "former";
  EXPECT_TRUE(utilGetUSfPathFromKelvoPath("/no/such/Kelvo/", folderOf));
  EXPECT_EQ(folderOf, "/no/such");
  EXPECT_TRUE(utilGetUSfPathFromKelvoPath("Kelvo", folderOf));
  EXPECT_EQ(folderOf, "");
  EXPECT_TRUE(utilGetUSfPathFromKelvoPath("/", folderOf));
  EXPECT_EQ(folderOf, "/");
}

// Where the shared files may go for a user with a home folder of the test's, to whom permission bits apply.
class SharedFilesTest : public SystemFoldersTest {
 protected:
  enum class Temporary { open, closed };

  // The answer in a process of its own, which must log nothing; nothing where a process may not close a folder for
  // itself alone.
  std::optional<std::string> place(Temporary temporary = Temporary::open) const {
    const support::Shared<std::array<char, 200>> answer;
    const auto ask = [&] {
      if (!support::giveUpPowers()) return 1;
      std::string path = "former";
      const bool found = utilGetUSFPath(path);
      ((found ? "" : "(false) ") + path).copy(answer->data(), answer->size() - 1);
      return 0;
    };
    const int result = asUserAtHome([&] {
      if (temporary == Temporary::open) return support::Child(ask).wait();
      return support::withOwnMounts([&] { return closeTemporaryFolder() ? ask() : support::kImpossible; });
    });
    EXPECT_EQ(logged(), Lines{});
    if (result == support::kImpossible) return std::nullopt;
    EXPECT_EQ(result, 0);
    return answer->data();
  }

  static void make(const std::string& path, mode_t mode) {
    std::filesystem::create_directories(path);
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
  }

  // A UUID stands between the two.
  static bool isFreshIn(const std::string& parent, const std::string& path) {
    return ::fnmatch((parent + "/*-*-*-*-*/Orvane/TARN/Kelvo/").c_str(), path.c_str(), FNM_PATHNAME) == 0;
  }

  const std::string home = folder / "home";

 private:
  int asUserAtHome(const std::function<int()>& body) const {
    const std::string id = std::to_string(::geteuid());
    const support::PasswordDatabase user("tester:x:" + id + ":" + id + "::" + home + ":/bin/sh\n");
    return body();
  }

  // Nothing can be made in /tmp from now on, but in the home folder it can, wherever that is.
  bool closeTemporaryFolder() const {
    const auto bind = [](const char* path) { return ::mount(path, path, nullptr, MS_BIND | MS_REC, nullptr) == 0; };
    return bind(home.c_str()) && bind("/tmp") &&
           ::mount(nullptr, "/tmp", nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
  }
};

TEST_F(SharedFilesTest, AWritableHomeFolderGivesTheFirstPlaceEvenWithoutAnApplicationsFolder) {
  make(home, 0700);
  EXPECT_EQ(place(), home + "/Applications/Orvane/TARN/Kelvo/");
  EXPECT_EQ(support::namesIn(home), Lines{}) << "nothing is created";
}

TEST_F(SharedFilesTest, AClosedApplicationsFolderGivesTheSecondPlace) {
  make(home, 0700);
  make(home + "/Applications", 0500);
  EXPECT_EQ(place(), home + "/Library/Application Support/Orvane/TARN/Kelvo/");
}

TEST_F(SharedFilesTest, AFileThatIsNoProgramInTheFirstPlaceGivesTheSecond) {
  make(home, 0700);
  support::writeFile(home + "/Applications", "");
  EXPECT_EQ(place(), home + "/Library/Application Support/Orvane/TARN/Kelvo/");
}

TEST_F(SharedFilesTest, AClosedHomeFolderGivesAFreshOneInTheTemporaryFolder) {
  make(home, 0500);
  const std::string first = place().value();
  EXPECT_TRUE(isFreshIn("/tmp", first)) << first;
  EXPECT_NE(place(), first);
  EXPECT_FALSE(std::filesystem::exists(first));
}

TEST_F(SharedFilesTest, TwoClosedFoldersInTheHomeFolderGiveTheTemporaryFolderBeforeTheHomeFolder) {
  make(home + "/Applications", 0500);
  make(home + "/Library", 0500);
  const std::string path = place().value();
  EXPECT_TRUE(isFreshIn("/tmp", path)) << path;
}

TEST_F(SharedFilesTest, AClosedTemporaryFolderBesidesGivesAFreshOneInTheHomeFolder) {
  make(home + "/Applications", 0500);
  make(home + "/Library", 0500);
  const auto path = place(Temporary::closed);
  if (!path) GTEST_SKIP() << "this process may not mount";
  EXPECT_TRUE(isFreshIn(home, *path)) << *path;
  EXPECT_NE(place(Temporary::closed), path);
  EXPECT_EQ(support::namesIn(home), (Lines{"Applications", "Library"})) << "nothing is created";
}

TEST_F(SharedFilesTest, WhereNothingCanBeMadeThereIsNoPlaceAndTheAnswerStays) {
  make(home, 0500);
  const auto path = place(Temporary::closed);
  if (!path) GTEST_SKIP() << "this process may not mount";
  EXPECT_EQ(path, "(false) former");
}

}  // namespace
