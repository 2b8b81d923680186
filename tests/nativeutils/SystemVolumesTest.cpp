#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/platform/FakeFileSystem.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"

namespace {

using Lines = std::vector<std::string>;

std::string volumeOf(const std::string& path) {
  std::string volume = "previous";
  return util_getVolumePath(path, volume) ? volume : "(false) " + volume;
}

std::string nameOf(const std::string& path) {
  std::string name = "previous";
  return utilGetVolumeNameOfPath(path, name) ? name : "(false) " + name;
}

class SystemVolumesTest : public nativeutils_test::LoggedTest {
 protected:
  ~SystemVolumesTest() override {
    platform_test::fakeLabel.reset();
    platform_test::errors.clear();
  }

  const std::string error = "ERROR Error in getting ... util_getVolumePath";
  const std::string warning = "WARN utilGetVolumeNameOfPath failed to get volume path.";

  const support::TemporaryFolder folder;
};

TEST_F(SystemVolumesTest, ReturnsTheMountPoint) {
  EXPECT_EQ(volumeOf("/proc"), "/proc");
  EXPECT_EQ(volumeOf("/proc/self/status"), "/proc");
  EXPECT_EQ(volumeOf("/"), "/");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(SystemVolumesTest, UsesTheNearestAncestorOfAMissingFile) {
  EXPECT_EQ(volumeOf("/tmp/no-such-file"), volumeOf("/tmp"));
  EXPECT_EQ(volumeOf("/proc/no/such//file/"), "/proc");
  EXPECT_EQ(volumeOf("//no/such"), "/");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(SystemVolumesTest, FollowsSymbolicLinksExceptDanglingOnes) {
  ASSERT_EQ(::symlink("/proc/self", (folder / "link").c_str()), 0);
  ASSERT_EQ(::symlink("/proc/no-such", (folder / "dangling").c_str()), 0);
  EXPECT_EQ(volumeOf(folder / "link/status"), "/proc");
  EXPECT_EQ(volumeOf(folder / "dangling"), volumeOf(folder.path()));
}

TEST_F(SystemVolumesTest, RejectsRelativeAndEmptyPaths) {
  EXPECT_EQ(volumeOf("relative/path"), "(false) previous");
  EXPECT_EQ(volumeOf(""), "(false) previous");
  EXPECT_EQ(logged(), (Lines{error, error}));
}

TEST_F(SystemVolumesTest, UsesTheParentOfATooLongName) {
  EXPECT_EQ(volumeOf("/proc/" + std::string(300, 'n')), "/proc");
}

TEST_F(SystemVolumesTest, AcceptsAPathOfAnyLength) {
  std::string path = "/proc";
  for (int i = 0; i < 100000; ++i)
    path += "/no";
  EXPECT_EQ(volumeOf(path), "/proc");
}

TEST_F(SystemVolumesTest, RejectsAPathBelowAFile) {
  support::writeFile(folder / "file", "");
  EXPECT_EQ(volumeOf(folder / "file/below"), "(false) previous");
  EXPECT_EQ(logged(), Lines{error});
}

TEST_F(SystemVolumesTest, RejectsALoopOfLinks) {
  ASSERT_EQ(::symlink("loop", (folder / "loop").c_str()), 0);
  EXPECT_EQ(volumeOf(folder / "loop"), "(false) previous");
  EXPECT_EQ(logged(), Lines{error});
}

TEST_F(SystemVolumesTest, RejectsAFolderWithoutSearchPermission) {
  ASSERT_EQ(::mkdir((folder / "closed").c_str(), 0), 0);
  support::Child child([&] {
    if (!support::dropCapabilities()) return 2;
    return volumeOf(folder / "closed/file") == "(false) previous" ? 0 : 1;
  });
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(logged(), Lines{error});
}

TEST_F(SystemVolumesTest, RootNameIsItsLabelOrSlash) {
  const int result = support::withOwnMounts([&] {
    const std::string root = folder.path();
    if (!support::mountMemory(root, 1 << 20) || ::chroot(root.c_str()) != 0) return support::kImpossible;
    if (nameOf("/") != "/" || nameOf("/no/such/file") != "/") return 1;
    platform_test::fakeLabel = "Back up";
    return nameOf("/") == "Back up" && nameOf("/no/such/file") == "Back up" ? 0 : 2;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "no permission to mount";
  EXPECT_EQ(result, 0);
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(SystemVolumesTest, NameIsTheLabelIfItIsUtf8) {
  platform_test::fakeLabel = "M\xC3\xBCller";
  EXPECT_EQ(nameOf("/proc/self"), "M\xC3\xBCller");
  platform_test::fakeLabel = "M\xFCller";
  EXPECT_EQ(nameOf("/proc/self"), "proc");
}

TEST_F(SystemVolumesTest, FailsOnAStaleFileSystem) {
  platform_test::errors = {ESTALE};
  EXPECT_EQ(volumeOf("/proc/no-such"), "(false) previous");
  EXPECT_EQ(logged(), Lines{error});
}

TEST_F(SystemVolumesTest, NameIsTheMountPointWithoutALabel) {
  EXPECT_EQ(nameOf("/proc/self"), "proc");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(SystemVolumesTest, AnEmptyPathHasNoName) {
  EXPECT_EQ(nameOf(""), "(false) previous");
  EXPECT_EQ(logged(), Lines{"WARN utilGetVolumeNameOfPath empty path"});
}

TEST_F(SystemVolumesTest, ARelativePathLogsTwoMessages) {
  EXPECT_EQ(nameOf("relative"), "(false) previous");
  EXPECT_EQ(logged(), (Lines{error, warning}));
}

TEST_F(SystemVolumesTest, OrdinaryVolumesAreCaseSensitive) {
  bool sensitive = false;
  EXPECT_TRUE(utilIsDriveCaseSensitive(folder.path(), sensitive));
  EXPECT_TRUE(sensitive);
}

TEST_F(SystemVolumesTest, CaseSensitivityOfAMissingPathIsUnknown) {
  for (bool sensitive : {false, true}) {
    const bool previous = sensitive;
    EXPECT_FALSE(utilIsDriveCaseSensitive(folder / "no-such", sensitive));
    EXPECT_FALSE(utilIsDriveCaseSensitive("", sensitive));
    EXPECT_EQ(sensitive, previous);
  }
}

}  // namespace
