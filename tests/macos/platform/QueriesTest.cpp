// What the library's questions about the machine ask of macOS, and what they say when it does not answer.

#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/macos/doubles/SystemCalls.h"
#include "tests/macos/doubles/Volumes.h"
#include "tests/nativeutils/NativeUtilsLog.h"

namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;

class QueriesTest : public nativeutils_test::LoggedTest {
 protected:
  QueriesTest() {
    doubles::volume = {};
    doubles::forgetCalls();
  }
  ~QueriesTest() override { EXPECT_THAT(doubles::unsettled(), testing::IsEmpty()); }

  // Asks for the folder while the call fails, so that it is not found, and gives what was logged.
  Lines failing(bool (*query)(std::string&), const std::string& call, int status) {
    doubles::forgetCalls();
    doubles::failCall(call, status);
    std::string path = "former";
    forget();
    EXPECT_FALSE(query(path));
    EXPECT_EQ(path, "former");
    return logged();
  }

  Lines failingVersion(const std::string& call) {
    doubles::forgetCalls();
    doubles::failCall(call, -5551);
    os_version version{1, 2, 3};
    forget();
    EXPECT_FALSE(utilGetCurrentOSVersion(version));
    EXPECT_THAT((std::array{version.major, version.minor, version.bugFix}), ElementsAre(1, 2, 3));
    EXPECT_EQ(doubles::takenCalls().back(), call);
    return logged();
  }
};

TEST_F(QueriesTest, FindFoldersByDomainAndKind) {
  std::string path;
  EXPECT_TRUE(utilGetUserAppDataFolder(path));
  EXPECT_EQ(path, support::ownHome() + "/Library/Application Support");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("FSFindFolder -32763 asup create", "FSRefMakePath " + path + " 1024"));
  EXPECT_TRUE(utilGetSystemApplicationSupportFolderPath(path));
  EXPECT_EQ(doubles::takenCalls().front(), "FSFindFolder -32768 asup create");
  EXPECT_TRUE(utilGetQRBPath(path));
  EXPECT_EQ(path, "/Library/Application Support/Orvane");
  EXPECT_EQ(doubles::takenCalls().front(), "FSFindFolder -32765 asup create");
  EXPECT_TRUE(utilGetApplicationsPath(path));
  EXPECT_EQ(path, "/Applications");
  EXPECT_EQ(doubles::takenCalls().front(), "FSFindFolder -32765 apps create");
  EXPECT_TRUE(utilGetVormInstallPath(path));
  EXPECT_EQ(path, "/Applications/Utilities/Orvane Application Manager/");
  EXPECT_EQ(doubles::takenCalls().front(), "FSFindFolder -32765 uti? create");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(QueriesTest, SayWhichStepToADataFolderFailed) {
  for (const auto query : {utilGetUserAppDataFolder, utilGetSystemApplicationSupportFolderPath}) {
    EXPECT_EQ(failing(query, "FSFindFolder", -43),
              Lines{"WARN Failed in finding location information  in utilGetUserAppDataFolder error:-43"});
    EXPECT_EQ(failing(query, "FSRefMakePath", -2110),
              Lines{"WARN Failed in path conversion in utilGetUserAppDataFolder error:-2110"});
  }
}

TEST_F(QueriesTest, SayWhichStepToTheInstallPathFailed) {
  EXPECT_EQ(failing(utilGetVormInstallPath, "FSFindFolder", -43),
            Lines{"FATAL Error creating Application-Utilities install path for Kelvo, Error Code: -43"});
  EXPECT_EQ(failing(utilGetVormInstallPath, "FSRefMakePath", -2110),
            Lines{"FATAL Error in converting path into POSIX-style pathname, Error Code: -2110"});
}

TEST_F(QueriesTest, NameTheSharedFoldersWhetherTheyWereFoundOrNot) {
  doubles::failCall("FSFindFolder", -43);
  std::string path;
  EXPECT_TRUE(utilGetQRBPath(path));
  EXPECT_EQ(path, "/Orvane");
  EXPECT_TRUE(utilGetApplicationsPath(path));
  EXPECT_EQ(path, "");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(QueriesTest, AskForTheVersionNumberByNumber) {
  os_version version{};
  EXPECT_TRUE(utilGetCurrentOSVersion(version));
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("Gestalt sys1", "Gestalt sys2", "Gestalt sys3"));
  EXPECT_EQ(logged(), Lines{"DEBUG System OS Version - major = 10, minor = 15, bugFix = 7"});
}

TEST_F(QueriesTest, SayWhichNumberOfTheVersionIsNotTold) {
  EXPECT_EQ(failingVersion("Gestalt sys1"), Lines{"FATAL Unable to retrieve OS major version"});
  EXPECT_EQ(failingVersion("Gestalt sys2"), Lines{"FATAL Unable to retrieve OS minor version"});
  EXPECT_EQ(failingVersion("Gestalt sys3"), Lines{"FATAL Unable to retrieve OS bug fix version"});
}

TEST_F(QueriesTest, LookForTheVolumeOfTheNearestThingThatExists) {
  std::string volume;
  EXPECT_TRUE(util_getVolumePath("/proc/no such/thing", volume));
  EXPECT_EQ(volume, "/proc");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("statfs /proc/no such/thing", "statfs /proc/no such", "statfs /proc"));
}

TEST_F(QueriesTest, LookNoFurtherForAVolumeAfterAnotherError) {
  doubles::failCall("statfs", EACCES);
  std::string name = "former";
  EXPECT_FALSE(utilGetVolumeNameOfPath("/proc/self", name));
  EXPECT_EQ(name, "former");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("statfs /proc/self"));
  EXPECT_EQ(logged(), (Lines{"ERROR Error in getting ... util_getVolumePath",
                             "WARN utilGetVolumeNameOfPath failed to get volume path."}));
}

TEST_F(QueriesTest, TakeTheNameOfAVolumeFromItsMountPoint) {
  std::string name;
  EXPECT_TRUE(utilGetVolumeNameOfPath("/proc/self/status", name));
  EXPECT_EQ(name, "Macintosh HD");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("statfs /proc/self/status", "FSPathMakeRef /proc",
                                                 "FSGetCatalogInfo /proc 4", "FSGetVolumeInfo -100 0 0"));
}

TEST_F(QueriesTest, AreSilentAboutAVolumeWithoutAName) {
  for (const char* call : {"FSGetVolumeInfo", "FSGetCatalogInfo", "FSPathMakeRef"}) {
    doubles::failCall(call, -43);
    std::string name = "former";
    EXPECT_FALSE(utilGetVolumeNameOfPath("/proc", name)) << call;
    EXPECT_EQ(name, "former");
  }
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(QueriesTest, LeaveTheCaseRuleAloneThatTheyDoNotLearn) {
  doubles::volume.extendedAttributes = 1 << 22;
  bool sensitive = false;
  EXPECT_TRUE(utilIsDriveCaseSensitive("/proc", sensitive));
  EXPECT_TRUE(sensitive);
  for (const char* call : {"FSGetVolumeParms", "FSGetCatalogInfo", "FSPathMakeRef"}) {
    doubles::failCall(call, -43);
    doubles::volume.extendedAttributes = 0;
    EXPECT_FALSE(utilIsDriveCaseSensitive("/proc", sensitive)) << call;
    EXPECT_TRUE(sensitive);
  }
}

}  // namespace
