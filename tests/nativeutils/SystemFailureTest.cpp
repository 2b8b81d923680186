// System queries when the system reports a failure, and for programs in a bundle.

#include "nativeutils/NativeUtils.h"

#include <string>
#include <vector>

#include "tests/nativeutils/FakeSystem.h"
#include "tests/nativeutils/NativeUtilsLog.h"

namespace {

using nativeutils_test::FakeSystem;
using nativeutils_test::fakeSystem;
using platform::Architecture;
using platform::VersionPart;
using Failure = platform::FolderSearch::Failure;
using Lines = std::vector<std::string>;

class SystemFailureTest : public nativeutils_test::LoggedTest {
 protected:
  SystemFailureTest() { fakeSystem = FakeSystem{}; }

  // Calls a query, which must fail. Returns what was logged.
  Lines logOf(bool (*query)(std::string&), Failure failure, int status) {
    fakeSystem.folder = {failure, status, "/known"};
    std::string path = "previous";
    forget();
    EXPECT_FALSE(query(path));
    EXPECT_EQ(path, "previous");
    return logged();
  }

  Lines logOfVersion(VersionPart part) {
    fakeSystem.unknownPart = part;
    os_version version{1, 2, 3};
    forget();
    EXPECT_FALSE(utilGetCurrentOSVersion(version));
    EXPECT_EQ(version.major, 1);
    EXPECT_EQ(version.minor, 2);
    EXPECT_EQ(version.bugFix, 3);
    return logged();
  }

  static std::string nameOf(const std::string& bundle, const std::string& executable) {
    fakeSystem.bundle = bundle;
    fakeSystem.executable = executable;
    std::string name = "previous";
    EXPECT_TRUE(utilGetApplicationName(name));
    return name;
  }

  static bool is64Bit(const std::vector<Architecture>& architectures) {
    fakeSystem.architectures = architectures;
    return utilIs64Bit();
  }
};

TEST_F(SystemFailureTest, WarnsAboutAMissingDataFolder) {
  for (const auto query : {utilGetUserAppDataFolder, utilGetSystemApplicationSupportFolderPath}) {
    EXPECT_EQ(logOf(query, Failure::kFind, -43),
              Lines{"WARN Failed in finding location information  in utilGetUserAppDataFolder error:-43"});
  }
}

TEST_F(SystemFailureTest, WarnsAboutADataFolderWithoutAPath) {
  for (const auto query : {utilGetUserAppDataFolder, utilGetSystemApplicationSupportFolderPath}) {
    EXPECT_EQ(logOf(query, Failure::kPath, 36),
              Lines{"WARN Failed in path conversion in utilGetUserAppDataFolder error:36"});
  }
}

TEST_F(SystemFailureTest, WarnsAboutADataFolderOutsideUtf8) {
  for (const auto query : {utilGetUserAppDataFolder, utilGetSystemApplicationSupportFolderPath}) {
    EXPECT_EQ(logOf(query, Failure::kText, 84), Lines{"WARN Error in allocating memory in utilGetUserAppDataFolder"});
  }
}

TEST_F(SystemFailureTest, LogsInstallPathFailuresAsFatal) {
  EXPECT_EQ(logOf(utilGetVormInstallPath, Failure::kFind, 13),
            Lines{"FATAL Error creating Application-Utilities install path for Kelvo, Error Code: 13"});
  EXPECT_EQ(logOf(utilGetVormInstallPath, Failure::kPath, 36),
            Lines{"FATAL Error in converting path into POSIX-style pathname, Error Code: 36"});
  EXPECT_EQ(logOf(utilGetVormInstallPath, Failure::kText, 84),
            Lines{"FATAL Error converting Application-Utilities path as C string to string"});
}

TEST_F(SystemFailureTest, ReturnsSharedFoldersThatAreMissing) {
  fakeSystem.folder = {Failure::kFind, 13, "/known"};
  std::string path;
  EXPECT_TRUE(utilGetQRBPath(path));
  EXPECT_EQ(path, "/known/Orvane");
  EXPECT_TRUE(utilGetApplicationsPath(path));
  EXPECT_EQ(path, "/known");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(SystemFailureTest, LogsMissingVersionNumbersAsFatal) {
  EXPECT_EQ(logOfVersion(VersionPart::kMajor), Lines{"FATAL Unable to retrieve OS major version"});
  EXPECT_EQ(logOfVersion(VersionPart::kMinor), Lines{"FATAL Unable to retrieve OS minor version"});
  EXPECT_EQ(logOfVersion(VersionPart::kBugFix), Lines{"FATAL Unable to retrieve OS bug fix version"});
}

TEST_F(SystemFailureTest, NameIsThatOfTheBundleOrExecutable) {
  EXPECT_EQ(nameOf("/Applications/Tool.app", "/Applications/Tool.app/Contents/MacOS/runner"), "Tool.app");
  EXPECT_EQ(nameOf("/usr/bin", "/usr/bin/runner"), "runner");
  EXPECT_EQ(nameOf("/opt/Tool.apps", "/opt/Tool.apps/runner"), "runner");
  EXPECT_EQ(nameOf("", ""), "");
}

TEST_F(SystemFailureTest, SelfPathIsTheFolderOfTheBundle) {
  std::string path;
  fakeSystem.bundle = "/Applications/Tool.app";
  EXPECT_TRUE(utilGetSelfPath(path));
  EXPECT_EQ(path, "/Applications");
  fakeSystem.bundle = "/usr/bin";
  EXPECT_TRUE(utilGetSelfPath(path));
  EXPECT_EQ(path, "/usr/bin");
}

TEST_F(SystemFailureTest, SelfPathFailsWithoutABundle) {
  std::string path = "previous";
  EXPECT_FALSE(utilGetSelfPath(path));
  EXPECT_EQ(path, "previous");
}

TEST_F(SystemFailureTest, ReportsTwoArchitecturesAs64Bit) {
  EXPECT_TRUE(is64Bit({Architecture::kX86, Architecture::kX64}));
  EXPECT_TRUE(is64Bit({Architecture::kPpc64}));
  EXPECT_FALSE(is64Bit({Architecture::kX86, Architecture::kPpc, Architecture::kOther}));
  EXPECT_FALSE(is64Bit({}));
}

TEST_F(SystemFailureTest, FailsSilentlyWithoutAVolumeName) {
  fakeSystem.mountPoint = "/gone";
  std::string name = "previous";
  EXPECT_FALSE(utilGetVolumeNameOfPath("/gone/file", name));
  EXPECT_EQ(name, "previous");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(SystemFailureTest, FailsForAVolumeWithoutPermission) {
  std::string name = "previous";
  EXPECT_FALSE(utilGetVolumeNameOfPath("/closed/file", name));
  EXPECT_EQ(name, "previous");
  EXPECT_EQ(logged(), (Lines{"ERROR Error in getting ... util_getVolumePath",
                             "WARN utilGetVolumeNameOfPath failed to get volume path."}));
}

}  // namespace
