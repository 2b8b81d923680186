// The library's functions about folders, the system version and volumes, and their log lines if a call fails.

#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/macos/doubles/SystemDoubles.h"
#include "tests/macos/doubles/Volumes.h"
#include "tests/nativeutils/NativeUtilsLog.h"

namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;

class QueriesTest : public nativeutils_test::LoggedTest {
 protected:
  QueriesTest() {
    doubles::volume = {};
    doubles::reset();
  }
  ~QueriesTest() override { EXPECT_THAT(doubles::unreleasedObjects(), testing::IsEmpty()); }

  // Runs a query for a folder while the call fails. Returns the logged messages.
  Lines failedFolderQuery(bool (*query)(std::string&), const std::string& call, int status) {
    doubles::reset();
    doubles::failCall(call, status);
    std::string path = "previous";
    forget();
    EXPECT_FALSE(query(path));
    EXPECT_EQ(path, "previous");
    return logged();
  }

  Lines failedVersionQuery(const std::string& call) {
    doubles::reset();
    doubles::failCall(call, -5551);
    os_version version{1, 2, 3};
    forget();
    EXPECT_FALSE(utilGetCurrentOSVersion(version));
    EXPECT_THAT((std::array{version.major, version.minor, version.bugFix}), ElementsAre(1, 2, 3));
    return logged();
  }
};

TEST_F(QueriesTest, ReturnTheFoldersOfMacOs) {
  std::string path;
  EXPECT_TRUE(utilGetUserAppDataFolder(path));
  EXPECT_EQ(path, support::ownHome() + "/Library/Application Support");
  EXPECT_TRUE(utilGetSystemApplicationSupportFolderPath(path));
  EXPECT_EQ(path, "/System/Library/Application Support");
  EXPECT_TRUE(utilGetQRBPath(path));
  EXPECT_EQ(path, "/Library/Application Support/Orvane");
  EXPECT_TRUE(utilGetApplicationsPath(path));
  EXPECT_EQ(path, "/Applications");
  EXPECT_TRUE(utilGetVormInstallPath(path));
  EXPECT_EQ(path, "/Applications/Utilities/Orvane Application Manager/");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(QueriesTest, LogWhyADataFolderIsMissing) {
  for (const auto query : {utilGetUserAppDataFolder, utilGetSystemApplicationSupportFolderPath}) {
    EXPECT_EQ(failedFolderQuery(query, "FSFindFolder", -43),
              Lines{"WARN Failed in finding location information  in utilGetUserAppDataFolder error:-43"});
    EXPECT_EQ(failedFolderQuery(query, "FSRefMakePath", -2110),
              Lines{"WARN Failed in path conversion in utilGetUserAppDataFolder error:-2110"});
  }
}

TEST_F(QueriesTest, LogWhyTheInstallPathIsMissing) {
  EXPECT_EQ(failedFolderQuery(utilGetVormInstallPath, "FSFindFolder", -43),
            Lines{"FATAL Error creating Application-Utilities install path for Kelvo, Error Code: -43"});
  EXPECT_EQ(failedFolderQuery(utilGetVormInstallPath, "FSRefMakePath", -2110),
            Lines{"FATAL Error in converting path into POSIX-style pathname, Error Code: -2110"});
}

TEST_F(QueriesTest, SucceedWithoutASharedFolder) {
  doubles::failCall("FSFindFolder", -43);
  std::string path;
  EXPECT_TRUE(utilGetQRBPath(path));
  EXPECT_EQ(path, "/Orvane");
  EXPECT_TRUE(utilGetApplicationsPath(path));
  EXPECT_EQ(path, "");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(QueriesTest, LogTheSystemVersion) {
  os_version version{};
  EXPECT_TRUE(utilGetCurrentOSVersion(version));
  EXPECT_EQ(logged(), Lines{"DEBUG System OS Version - major = 10, minor = 15, bugFix = 7"});
}

TEST_F(QueriesTest, LogWhichVersionPartIsMissing) {
  EXPECT_EQ(failedVersionQuery("Gestalt sys1"), Lines{"FATAL Unable to retrieve OS major version"});
  EXPECT_EQ(failedVersionQuery("Gestalt sys2"), Lines{"FATAL Unable to retrieve OS minor version"});
  EXPECT_EQ(failedVersionQuery("Gestalt sys3"), Lines{"FATAL Unable to retrieve OS bug fix version"});
}

TEST_F(QueriesTest, ReturnTheVolumeOfTheNearestExistingAncestor) {
  std::string volume;
  EXPECT_TRUE(util_getVolumePath("/proc/no such/thing", volume));
  EXPECT_EQ(volume, "/proc");
}

TEST_F(QueriesTest, StopTheVolumeSearchAtAnError) {
  doubles::failNextCall("statfs", EACCES);
  std::string name = "previous";
  EXPECT_FALSE(utilGetVolumeNameOfPath("/proc/self", name));
  EXPECT_EQ(name, "previous");
  EXPECT_EQ(logged(), (Lines{"ERROR Error in getting ... util_getVolumePath",
                             "WARN utilGetVolumeNameOfPath failed to get volume path."}));
}

TEST_F(QueriesTest, ReturnTheNameOfAVolume) {
  std::string name;
  EXPECT_TRUE(utilGetVolumeNameOfPath("/proc/self/status", name));
  EXPECT_EQ(name, "Macintosh HD");
}

TEST_F(QueriesTest, LogNothingForAVolumeWithoutAName) {
  for (const char* call : {"FSGetVolumeInfo", "FSGetCatalogInfo", "FSPathMakeRef"}) {
    doubles::failCall(call, -43);
    std::string name = "previous";
    EXPECT_FALSE(utilGetVolumeNameOfPath("/proc", name)) << call;
    EXPECT_EQ(name, "previous");
  }
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(QueriesTest, KeepTheCaseRuleIfACallFails) {
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
