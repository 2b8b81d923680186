#include "logging/Helpers.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <ctime>
#include <filesystem>
#include <string>

#include "tests/support/Clock.h"
#include "tests/support/FakeClock.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

int formatted(char* buffer, std::size_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = tarn::getLogMessage(buffer, size, format, &arguments);
  va_end(arguments);
  return result;
}

TEST(Helpers, CurrentTimeIsTheSystemTime) {
  timeval time{};
  const std::time_t before = support::currentSecond();
  EXPECT_EQ(tarn::getCurrentTime(time), 0);
  EXPECT_GE(time.tv_sec, before);
  EXPECT_LE(time.tv_sec, support::currentSecond());
}

TEST(Helpers, DatetimeIsLocalTimeMonthFirst) {
  const support::FakeLocalTime now;
  std::string stamp;
  ASSERT_TRUE(tarn::getDatetime(stamp));
  EXPECT_EQ(stamp, now.stamp);
}

TEST(Helpers, MessageLeavesTwoBytesOfTheBuffer) {
  char buffer[11] = "##########";
  EXPECT_EQ(formatted(buffer, 10, "%s", "0123456789"), 10);
  EXPECT_STREQ(buffer, "01234567");
  EXPECT_EQ(buffer[9], '#');
}

TEST(Helpers, NullArgumentsWriteNothing) {
  char buffer[16] = "previous";
  EXPECT_EQ(tarn::getLogMessage(buffer, sizeof buffer, "text", nullptr), 0);
  EXPECT_STREQ(buffer, "previous");
}

TEST(Helpers, EmptyBufferIsNotWritten) {
  char buffer[2] = "#";
  EXPECT_EQ(formatted(buffer, 0, "%s", "text"), 0);
  EXPECT_STREQ(buffer, "#");
}

TEST(Helpers, IntBecomesDecimalText) {
  EXPECT_EQ(tarn::getStringFromInt(0), "0");
  EXPECT_EQ(tarn::getStringFromInt(-42), "-42");
}

TEST(Helpers, SystemVersionHasThreeNumbers) {
  int major = -1;
  int minor = -1;
  int bugFix = -1;
  ASSERT_TRUE(tarn::utilGetCurrentOSVersion(major, minor, bugFix));
  EXPECT_GT(major, 0);
  EXPECT_GE(minor, 0);
  EXPECT_GE(bugFix, 0);
}

TEST(Helpers, LogFolderHasMode0700) {
  const std::string home = support::freshHome();
  std::string folder;
  ASSERT_TRUE(tarn::getTempPath(folder));
  EXPECT_EQ(folder, home + "/Library/Logs");
  EXPECT_EQ(support::modeOf(home + "/Library"), 0700u);
  EXPECT_EQ(support::modeOf(folder), 0700u);
}

TEST(Helpers, ExistingLogFolderKeepsItsMode) {
  const std::string home = support::freshHome();
  std::filesystem::create_directories(home + "/Library/Logs");
  const unsigned mode = support::modeOf(home + "/Library/Logs");
  std::string folder;
  EXPECT_TRUE(tarn::getTempPath(folder));
  EXPECT_EQ(support::modeOf(folder), mode);
}

TEST(Helpers, TempPathFailsIfLibraryIsAFile) {
  const std::string home = support::freshHome();
  support::writeFile(home + "/Library", "a file");
  std::string folder = "previous";
  EXPECT_FALSE(tarn::getTempPath(folder));
  EXPECT_EQ(folder, "previous");
}

TEST(Helpers, TempPathFailsWithoutHome) {
  const support::PasswordDatabase empty("");
  std::string folder = "previous";
  EXPECT_FALSE(tarn::getTempPath(folder));
  EXPECT_EQ(folder, "previous");
}

TEST(Helpers, CreatesMissingParents) {
  const support::TemporaryFolder folder;
  EXPECT_TRUE(tarn::createDirectoryPath(folder / "a/b/c"));
  EXPECT_TRUE(tarn::createDirectoryPath(folder / "a/b/c"));
  EXPECT_TRUE(tarn::folderExitsAtPath(folder / "a/b/c"));
}

TEST(Helpers, CreateDirectoryFailsAtAFile) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "file", "");
  EXPECT_FALSE(tarn::createDirectoryPath(folder / "file"));
  EXPECT_FALSE(tarn::createDirectoryPath(folder / "file/sub"));
  EXPECT_FALSE(tarn::createDirectoryPath(""));
}

TEST(Helpers, DistinguishesFilesFromFolders) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "file", "");
  EXPECT_TRUE(tarn::fileExistsAtPath(folder / "file"));
  EXPECT_FALSE(tarn::folderExitsAtPath(folder / "file"));
  EXPECT_FALSE(tarn::fileExistsAtPath(folder.path()));
  EXPECT_TRUE(tarn::folderExitsAtPath(folder.path()));
  EXPECT_FALSE(tarn::fileExistsAtPath(folder / "missing"));
}

TEST(Helpers, ExistenceChecksFollowLinks) {
  const support::TemporaryFolder folder;
  std::filesystem::create_symlink("missing", folder / "dead");
  std::filesystem::create_symlink(folder.path(), folder / "link");
  EXPECT_FALSE(tarn::fileExistsAtPath(folder / "dead"));
  EXPECT_TRUE(tarn::folderExitsAtPath(folder / "link"));
}

TEST(Helpers, RenameMovesAFile) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "a", "text");
  EXPECT_TRUE(tarn::renamePathToPath(folder / "a", folder / "b"));
  EXPECT_EQ(support::contentsOf(folder / "b"), "text");
  EXPECT_FALSE(tarn::renamePathToPath(folder / "a", folder / "b"));
}

TEST(Helpers, SizeIsUnchangedForMissingFile) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "a", "12345");
  long long size = -1;
  EXPECT_TRUE(tarn::getFileSize(folder / "a", size));
  EXPECT_EQ(size, 5);
  EXPECT_FALSE(tarn::getFileSize(folder / "b", size));
  EXPECT_EQ(size, 5);
}

TEST(Helpers, AppendPathAddsOneSlash) {
  std::string path = "/a/";
  EXPECT_TRUE(tarn::appendPath(path, "b.log"));
  EXPECT_EQ(path, "/a/b.log");
  EXPECT_TRUE(tarn::removeLastPathComponent(path));
  EXPECT_EQ(path, "/a");
}

TEST(Helpers, FileNameHasNoFolderPart) {
  EXPECT_TRUE(tarn::isFileName("TARN.log"));
  EXPECT_FALSE(tarn::isFileName("/tmp/TARN.log"));
  EXPECT_FALSE(tarn::isFileName("logs/TARN.log"));
  EXPECT_FALSE(tarn::isFileName("logs/"));
}

TEST(Helpers, BaseNameIsThatOfBasename) {
  std::string name = "previous";
  EXPECT_TRUE(tarn::getFilePathBaseName("/a/b.log", name));
  EXPECT_EQ(name, "b.log");
  EXPECT_TRUE(tarn::getFilePathBaseName("", name));
  EXPECT_EQ(name, ".");
  EXPECT_TRUE(tarn::getFilePathBaseName("/a/b/", name));
  EXPECT_EQ(name, "b");
}

TEST(Helpers, ExtensionFollowsLastDotOfThePath) {
  std::string extension = "previous";
  EXPECT_FALSE(tarn::getFileExtension("name", extension));
  EXPECT_EQ(extension, "previous");
  EXPECT_TRUE(tarn::getFileExtension("/x.d/name", extension));
  EXPECT_EQ(extension, "d/name");
  EXPECT_TRUE(tarn::getFileExtension("name.", extension));
  EXPECT_EQ(extension, "");
}

TEST(Helpers, RemoveExtensionUsesLastComponent) {
  std::string path = "/x.d/name";
  EXPECT_TRUE(tarn::removeFileExtension(path));
  EXPECT_EQ(path, "/x.d/name");
  path = "name.tar.gz";
  EXPECT_TRUE(tarn::removeFileExtension(path));
  EXPECT_EQ(path, "name.tar");
}

TEST(Helpers, AddExtensionRejectsASlash) {
  std::string path = "name";
  EXPECT_FALSE(tarn::addFileExtension(path, "a/b"));
  EXPECT_EQ(path, "name");
  EXPECT_TRUE(tarn::addFileExtension(path, ""));
  EXPECT_EQ(path, "name.");
}

TEST(Helpers, ChangeExtensionKeepsTheRest) {
  std::string path = "dir/TARN.log";
  EXPECT_TRUE(tarn::changeFileExtension(path, "trace"));
  EXPECT_EQ(path, "dir/TARN.trace");
}

TEST(Helpers, AFailedChangeOfTheExtensionChangesNothing) {
  std::string path = "dir/TARN.log";
  EXPECT_FALSE(tarn::changeFileExtension(path, "a/b"));
  EXPECT_EQ(path, "dir/TARN.log");
}

}  // namespace
