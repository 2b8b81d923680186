#include "app/gtk/PrivateFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/Child.h"
#include "tests/support/Environment.h"
#include "tests/support/Files.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PrivateFolderTest : public testing::Test {
 protected:
  PrivateFolderTest() {
    struct stat root {};
    if (::stat("/", &root) == 0 && root.st_uid == 0) {
      runtime = std::filesystem::canonical(folder_.path()) / "run";
      ::mkdir(runtime.c_str(), 0700);
    }
    ::setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
  }

  void SetUp() override {
    if (runtime.empty()) GTEST_SKIP() << "the root folder belongs to another user";
  }

  // A process has one private folder, so each is created in a child. Returns the path's parent; "" if there is none.
  std::string parentOfNewFolder() const {
    const std::string file = folder_ / "result";
    support::inChild([&file] {
      const std::string path = createPrivateFolder();
      support::writeFile(file, path.empty() ? "" : std::filesystem::path(path).parent_path().string());
      removePrivateFolder();
      return 0;
    });
    return support::contentsOf(file);
  }

  static std::vector<std::string> contentsOf(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& each : std::filesystem::directory_iterator(folder))
      names.push_back(each.path().filename());
    return names;
  }

  static std::string temporaryFolder() {
    return std::filesystem::canonical(std::filesystem::temp_directory_path()).string();
  }

 private:
  const support::TemporaryFolder folder_;
  const support::Variable variable_{"XDG_RUNTIME_DIR", std::nullopt};

 protected:
  std::string runtime;
};

TEST_F(PrivateFolderTest, IsCreatedForTheUserAlone) {
  EXPECT_EQ(support::inChild([] {
              ::umask(0);
              return support::modeOf(createPrivateFolder()) == 0700 ? 0 : 1;
            }),
            0);
  EXPECT_EQ(parentOfNewFolder(), runtime);
}

TEST_F(PrivateFolderTest, IsRemovedWithItsContents) {
  EXPECT_EQ(support::inChild([] {
              const std::filesystem::path path = createPrivateFolder();
              std::filesystem::create_directories(path / "a/b/c");
              for (int i = 0; i < 500; ++i)
                support::writeFile(path / ("file" + std::to_string(i)), "x");
              std::filesystem::create_directory_symlink("/", path / "link");
              removePrivateFolder();
              return std::filesystem::exists(path) ? 1 : 0;
            }),
            0);
  EXPECT_THAT(contentsOf(runtime), IsEmpty());
}

TEST_F(PrivateFolderTest, TheRuntimeFolderMayBeALink) {
  std::filesystem::create_symlink(runtime, runtime + ".link");
  const support::Variable link("XDG_RUNTIME_DIR", runtime + ".link");
  EXPECT_EQ(parentOfNewFolder(), runtime);
}

TEST_F(PrivateFolderTest, AWritableRuntimeFolderIsNotUsed) {
  ASSERT_EQ(::chmod(runtime.c_str(), 0770), 0);
  EXPECT_EQ(parentOfNewFolder(), temporaryFolder());
}

TEST_F(PrivateFolderTest, ARuntimeFolderOfAnotherUserIsNotUsed) {
  if (::geteuid() != 0) GTEST_SKIP() << "not the super-user";
  ASSERT_EQ(::chown(runtime.c_str(), 12345, 12345), 0);
  EXPECT_EQ(parentOfNewFolder(), temporaryFolder());
}

TEST_F(PrivateFolderTest, ARuntimeFolderInAnotherUsersFolderIsNotUsed) {
  if (::geteuid() != 0) GTEST_SKIP() << "not the super-user";
  const std::string own = runtime + "/own";
  ASSERT_EQ(::mkdir(own.c_str(), 0700), 0);
  ASSERT_EQ(::chown(runtime.c_str(), 12345, 12345), 0);
  const support::Variable variable("XDG_RUNTIME_DIR", own);
  EXPECT_EQ(parentOfNewFolder(), temporaryFolder());
}

TEST_F(PrivateFolderTest, IsNotCreatedWithoutASafeParent) {
  const support::Variable relative("XDG_RUNTIME_DIR", "run");
  const support::Variable missing("TMPDIR", runtime + "/missing");
  EXPECT_EQ(parentOfNewFolder(), "");
}

TEST_F(PrivateFolderTest, AnAbandonedFolderIsRemoved) {
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  support::Child running([&ready] {
    const std::string path = createPrivateFolder();
    support::writeFile(path + "/file", "x");
    (void)::write(ready[1], "x", 1);
    ::pause();
    return 0;
  });
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  removeAbandonedFolders();
  EXPECT_EQ(contentsOf(runtime).size(), 1u);

  running.kill();
  running.wait();
  support::writeFile(runtime + "/.svo-session-file", "not a folder");
  removeAbandonedFolders();
  EXPECT_THAT(contentsOf(runtime), ElementsAre(".svo-session-file"));
  ::close(ready[0]);
  ::close(ready[1]);
}

}  // namespace
