#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "nativeutils/Base64.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using support::contentsOf;
using support::namesIn;
using support::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;

bool failsMkdir = false;

constexpr const char* kNotBase64 = "INFO Failed to decode from base 64.";

bool isUuid(const std::string& text) {
  if (text.size() != 36 || text.find_first_not_of("0123456789ABCDEF-") != std::string::npos) return false;
  return text[8] == '-' && text[13] == '-' && text[18] == '-' && text[23] == '-';
}

}  // namespace

// Replaces the function of the C library.
extern "C" int mkdir(const char* path, mode_t mode) noexcept {
  if (!failsMkdir) return ::mkdirat(AT_FDCWD, path, mode);
  errno = EROFS;
  return -1;
}

namespace {

class DataFilesTest : public nativeutils_test::LoggedTest {
 protected:
  const support::TemporaryFolder folder;
  const std::string path = folder / "file";
  std::string out = "unchanged";
};

TEST_F(DataFilesTest, WritesExactlyTheGivenBytes) {
  EXPECT_TRUE(utilCreateFileWithData("a\0bc", 3, path));
  EXPECT_EQ(contentsOf(path), std::string("a\0b", 3));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(DataFilesTest, ReplacesAFileAndLeavesNoOther) {
  writeFile(path, "something longer");
  EXPECT_TRUE(utilCreateFileWithData("new", 3, path));
  EXPECT_EQ(contentsOf(path), "new");
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
}

TEST_F(DataFilesTest, WritesAnEmptyFileForLengthZero) {
  EXPECT_TRUE(utilCreateFileWithData("abc", 0, path));
  EXPECT_TRUE(utilCreateFileWithData(nullptr, 0, folder / "null"));
  EXPECT_EQ(contentsOf(path), "");
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file", "null"));
}

TEST_F(DataFilesTest, FailsWithoutAPathAFolderOrData) {
  EXPECT_FALSE(utilCreateFileWithData("abc", 3, ""));
  EXPECT_FALSE(utilCreateFileWithData("abc", 3, folder / "missing/file"));
  EXPECT_FALSE(utilCreateFileWithData("abc", 3, folder.path()));
  EXPECT_FALSE(utilCreateFileWithData("abc", -1, path));
  EXPECT_FALSE(utilCreateFileWithData(nullptr, 3, path));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(DataFilesTest, WritesNothingForAnEmptyPath) {
  support::Child inFolder(
      [&] { return ::chdir(folder.path().c_str()) == 0 && !utilCreateFileWithData("abc", 3, "") ? 0 : 1; });
  EXPECT_EQ(inFolder.wait(), 0);
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

TEST_F(DataFilesTest, FlushingAlwaysSucceeds) {
  EXPECT_TRUE(utilFlushFileBuffers(path));
  EXPECT_TRUE(utilFlushFileBuffers(""));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(DataFilesTest, DecodesAFileIgnoringTheLength) {
  for (const int length : {-1, 0, 4, 100}) {
    EXPECT_TRUE(utilDecodeBase64AndCreateFileWithData("Zm9v\nAAE=", length, path));
    EXPECT_EQ(contentsOf(path), std::string("foo\0\1", 5));
    ASSERT_EQ(::unlink(path.c_str()), 0);
  }
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(DataFilesTest, DecodesAnEmptyTextToAnEmptyFile) {
  EXPECT_TRUE(utilDecodeBase64AndCreateFileWithData("", 0, path));
  EXPECT_TRUE(utilDecodeBase64AndCreateFileWithData(" \n", 0, folder / "blank"));
  EXPECT_EQ(contentsOf(path), "");
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("blank", "file"));
}

TEST_F(DataFilesTest, LogsATextThatIsNotBase64) {
  EXPECT_FALSE(utilDecodeBase64AndCreateFileWithData("Zm9vZm9", 7, path));
  EXPECT_FALSE(utilDecodeBase64AndCreateFileWithData(nullptr, 0, path));
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
  EXPECT_THAT(logged(), ElementsAre(kNotBase64, kNotBase64));
}

TEST_F(DataFilesTest, DecodingNeedsAPathAndAFolder) {
  EXPECT_FALSE(utilDecodeBase64AndCreateFileWithData("Zm9v", 4, ""));
  EXPECT_FALSE(utilDecodeBase64AndCreateFileWithData("Zm9v", 4, folder / "missing/file"));
  EXPECT_THAT(logged(), IsEmpty());
}

class TempFileTest : public DataFilesTest {
 protected:
  bool create(const char* base64, const char* fileName) {
    return utilCreateTempFileAtFolderWithBase64Data(base64, 0, place, fileName, out);
  }

  std::string place = folder / "new/place";
};

TEST_F(TempFileTest, CreatesItsFolders) {
  const mode_t umask = ::umask(0);
  EXPECT_TRUE(create("Zm9v", "name.txt"));
  ::umask(umask);
  EXPECT_EQ(out, folder / "new/place/name.txt");
  EXPECT_EQ(contentsOf(out), "foo");
  EXPECT_EQ(support::modeOf(place), 0775u);
  EXPECT_EQ(place, folder / "new/place");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(TempFileTest, UsesAUuidWithoutAName) {
  for (const char* noName : {static_cast<const char*>(nullptr), ""}) {
    ASSERT_TRUE(create("Zm9v", noName));
    ASSERT_EQ(out.rfind(place + "/", 0), 0u) << out;
    EXPECT_TRUE(isUuid(out.substr(place.size() + 1))) << out;
    EXPECT_EQ(contentsOf(out), "foo");
  }
  EXPECT_EQ(namesIn(place).size(), 2u);
}

TEST_F(TempFileTest, KeepsTheSlashesOfTheFolder) {
  place += "/";
  EXPECT_TRUE(create("Zm9v", "name"));
  EXPECT_EQ(out, folder / "new/place//name");
}

TEST_F(TempFileTest, AcceptsANameWithFolders) {
  EXPECT_TRUE(create("Zm9v", "../name"));
  EXPECT_EQ(out, folder / "new/place/../name");
  EXPECT_EQ(contentsOf(folder / "new/name"), "foo");
}

TEST_F(TempFileTest, LeavesTheFolderIfTheTextIsInvalid) {
  EXPECT_FALSE(create("Zm9", "name"));
  EXPECT_EQ(out, "unchanged");
  EXPECT_THAT(namesIn(place), IsEmpty());
  EXPECT_THAT(logged(), ElementsAre(kNotBase64));
}

TEST_F(TempFileTest, FailsWithoutAFolder) {
  writeFile(folder / "new", "a file");
  EXPECT_FALSE(create("Zm9v", "name"));
  EXPECT_EQ(out, "unchanged");
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("new"));
}

TEST_F(TempFileTest, AcceptsTheFolderStringAsOutput) {
  EXPECT_TRUE(utilCreateTempFileAtFolderWithBase64Data("Zm9v", 4, place, "name", place));
  EXPECT_EQ(place, folder / "new/place/name");
}

class FileToBase64Test : public DataFilesTest {
 protected:
  void expectReadError(const std::string& file, const std::string& error) {
    EXPECT_FALSE(utilGetDataFromFileAndEncodeBase64(file, out));
    EXPECT_EQ(out, "unchanged");
    EXPECT_THAT(logged(), ElementsAre("FATAL GetDataFromFile. Get String error " + error + ". From file " + file));
    forget();
  }
};

TEST_F(FileToBase64Test, AppendsTheTextOfTheFile) {
  writeFile(path, "f\xC3\xB6\n");
  ASSERT_EQ(::symlink("file", (folder / "link").c_str()), 0);
  EXPECT_TRUE(utilGetDataFromFileAndEncodeBase64(path, out));
  EXPECT_EQ(out, "unchangedZsO2Cg==");
  EXPECT_TRUE(utilGetDataFromFileAndEncodeBase64(folder / "link", out));
  EXPECT_EQ(out, "unchangedZsO2Cg==ZsO2Cg==");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FileToBase64Test, EndsAtTheFirstZeroCharacter) {
  writeFile(path, std::string("A\0B", 3));
  EXPECT_TRUE(utilGetDataFromFileAndEncodeBase64(path, out));
  EXPECT_EQ(out, "unchangedQQ==");
}

TEST_F(FileToBase64Test, AppendsNothingForAnEmptyFile) {
  writeFile(path, "");
  EXPECT_TRUE(utilGetDataFromFileAndEncodeBase64(path, out));
  EXPECT_EQ(out, "unchanged");
}

TEST_F(FileToBase64Test, ReadsAFileOfUnknownSize) {
  EXPECT_TRUE(utilGetDataFromFileAndEncodeBase64("/proc/self/status", out));
  EXPECT_GT(out.size(), std::string("unchanged").size());
}

TEST_F(FileToBase64Test, LogsAMissingFile) {
  ASSERT_EQ(::symlink("missing", path.c_str()), 0);
  for (const std::string& missing : {folder / "missing", path, std::string()}) {
    EXPECT_FALSE(utilGetDataFromFileAndEncodeBase64(missing, out));
    EXPECT_EQ(out, "unchanged");
    EXPECT_THAT(logged(), ElementsAre("FATAL GetDataFromFile. File " + missing + " does not exist."));
    forget();
  }
}

TEST_F(FileToBase64Test, LogsAReadError) {
  std::string out = "unchanged";
  EXPECT_FALSE(utilGetDataFromFileAndEncodeBase64("/proc/self/mem", out));
  EXPECT_EQ(out, "unchanged");
  EXPECT_THAT(logged(), testing::ElementsAre("FATAL GetDataFromFile. Get String error Input/output error. From file "
                                             "/proc/self/mem"));
}

TEST_F(FileToBase64Test, LogsAFileThatIsNotUtf8) {
  writeFile(path, std::string("fine\0\xFF", 6));
  expectReadError(path, "Invalid or incomplete multibyte or wide character");
  writeFile(path, "cut \xC3");
  expectReadError(path, "Invalid or incomplete multibyte or wide character");
}

TEST_F(FileToBase64Test, LogsAFolderOrPipeWithoutWaiting) {
  expectReadError(folder.path(), "Is a directory");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  expectReadError(path, "Invalid argument");
}

// Changes to the folder and drops the privileges of the super-user until the end of the scope. Paths must be relative,
// because the other user may not enter the parent folders.
class Powerless {
 public:
  explicit Powerless(const std::string& folder) : previous_(std::filesystem::current_path()) {
    std::filesystem::permissions(folder, std::filesystem::perms{0755});
    std::filesystem::current_path(folder);
    constexpr uid_t kOtherUser = 65534;
    if (isSuperUser_ && ::seteuid(kOtherUser) != 0) throw std::runtime_error("the super-user cannot change the user");
  }
  Powerless(const Powerless&) = delete;
  Powerless& operator=(const Powerless&) = delete;
  ~Powerless() {
    if (isSuperUser_) (void)!::seteuid(0);
    std::filesystem::current_path(previous_);
  }

 private:
  const std::filesystem::path previous_;
  const bool isSuperUser_ = ::geteuid() == 0;
};

TEST_F(FileToBase64Test, LogsAnUnreadableFile) {
  writeFile(path, "secret");
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  {
    const Powerless powerless(folder.path());
    EXPECT_FALSE(utilGetDataFromFileAndEncodeBase64("file", out));
  }
  EXPECT_EQ(out, "unchanged");
  EXPECT_THAT(logged(), ElementsAre("FATAL GetDataFromFile. Get String error Permission denied. From file file"));
}

TEST_F(DataFilesTest, CreatesATemporaryFolderNamedByAUuid) {
  std::string other;
  const mode_t umask = ::umask(0);
  const bool made = utilCreateAndGetTempFolderPath(out) && utilCreateAndGetTempFolderPath(other);
  ::umask(umask);
  ASSERT_TRUE(made);
  EXPECT_EQ(out.size(), 41u);
  EXPECT_EQ(out.rfind("/tmp/", 0), 0u);
  EXPECT_TRUE(isUuid(out.substr(5))) << out;
  EXPECT_NE(out, other);
  EXPECT_EQ(support::modeOf(out), 0775u);
  EXPECT_EQ(::rmdir(out.c_str()), 0);
  EXPECT_EQ(::rmdir(other.c_str()), 0);
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(DataFilesTest, LogsNothingWithoutATemporaryFolder) {
  failsMkdir = true;
  const bool made = utilCreateAndGetTempFolderPath(out);
  failsMkdir = false;
  EXPECT_FALSE(made);
  EXPECT_EQ(out, "unchanged");
  EXPECT_THAT(logged(), IsEmpty());
}

}  // namespace
