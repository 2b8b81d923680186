#include "platform/Path.h"

#include <gtest/gtest.h>
#include <libgen.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

struct Row {
  const char* path;
  const char* last;
  const char* withoutLast;
  const char* extension;
  const char* withoutExtension;
};

const Row kRows[] = {
    {"", "", "", "", ""},
    {"/", "/", "/", "", "/"},
    {"//", "/", "/", "", "/"},
    {"///", "/", "/", "", "/"},
    {"a", "a", "", "", "a"},
    {"a/", "a", "", "", "a"},
    {"a//", "a", "", "", "a"},
    {"/a", "a", "/", "", "/a"},
    {"//a", "a", "/", "", "/a"},
    {"/a/", "a", "/", "", "/a"},
    {"a/b", "b", "a", "", "a/b"},
    {"a//b", "b", "a", "", "a/b"},
    {"/a//b//c", "c", "/a/b", "", "/a/b/c"},
    {"/tmp/scratch.tiff", "scratch.tiff", "/tmp", "tiff", "/tmp/scratch"},
    {"/tmp/lock/", "lock", "/tmp", "", "/tmp/lock"},
    {"scratch///", "scratch", "", "", "scratch"},
    {"scratch.bundle/", "scratch.bundle", "", "bundle", "scratch"},
    {"scratch..tiff", "scratch..tiff", "", "tiff", "scratch."},
    {"name.tar.gz", "name.tar.gz", "", "gz", "name.tar"},
    {"a.", "a.", "", "", "a"},
    {".hidden", ".hidden", "", "", ".hidden"},
    {"/x/.hidden", ".hidden", "/x", "", "/x/.hidden"},
    {".hidden.txt", ".hidden.txt", "", "txt", ".hidden"},
    {"/x.d/name", "name", "/x.d", "", "/x.d/name"},
    {".", ".", "", "", "."},
    {"..", "..", "", "", "."},
    {"...", "...", "", "", ".."},
    {"/..", "..", "/", "", "/."},
    {"a/.", ".", "a", "", "a/."},
    {"a/..", "..", "a", "", "a/."},
    {"a/../", "..", "a", "", "a/."},
    {"../a.b", "a.b", "..", "b", "../a"},
    {"./a", "a", ".", "", "./a"},
    {"a b.c d", "a b.c d", "", "c d", "a b"},
    {"/h\xC3\xB6me/\xC3\xA4.log", "\xC3\xA4.log", "/h\xC3\xB6me", "log", "/h\xC3\xB6me/\xC3\xA4"},
    {"http://host/page.html", "page.html", "http:/host", "html", "http:/host/page"},
};

TEST(PathTest, ReturnsTheLastComponent) {
  for (const Row& row : kRows)
    EXPECT_EQ(platform::lastPathComponent(row.path), row.last) << row.path;
}

TEST(PathTest, DeletesTheLastComponent) {
  for (const Row& row : kRows)
    EXPECT_EQ(platform::deletingLastPathComponent(row.path), row.withoutLast) << row.path;
}

TEST(PathTest, CutsTheLastComponentInPlace) {
  const std::pair<const char*, const char*> cuts[] = {{"/a//b/", "/a"}, {"/a/b", "/a"}, {"//a", "/"}, {"/a", "/"},
                                                      {"a//b//", "a"},  {"a", ""},      {"a/", ""}};
  for (const auto& [path, parent] : cuts) {
    std::string rest = path;
    EXPECT_TRUE(platform::cutLastComponent(rest)) << path;
    EXPECT_EQ(rest, parent) << path;
  }
  for (const char* path : {"", "/", "//"}) {
    std::string rest = path;
    EXPECT_FALSE(platform::cutLastComponent(rest)) << path;
    EXPECT_EQ(rest, path);
  }
}

TEST(PathTest, ReturnsTheExtension) {
  for (const Row& row : kRows)
    EXPECT_EQ(platform::pathExtension(row.path), row.extension) << row.path;
}

TEST(PathTest, DeletesTheExtensionAndItsDot) {
  for (const Row& row : kRows)
    EXPECT_EQ(platform::deletingPathExtension(row.path), row.withoutExtension) << row.path;
}

struct Joint {
  const char* left;
  const char* right;
  const char* joined;
};

TEST(PathTest, AppendsAComponentWithExactlyOneSlash) {
  const Joint joints[] = {
      {"/tmp", "scratch.tiff", "/tmp/scratch.tiff"},
      {"/tmp/", "scratch.tiff", "/tmp/scratch.tiff"},
      {"/tmp//", "/scratch.tiff", "/tmp/scratch.tiff"},
      {"/", "scratch.tiff", "/scratch.tiff"},
      {"", "scratch.tiff", "scratch.tiff"},
      {"", "/scratch.tiff", "/scratch.tiff"},
      {"", "", ""},
      {"/", "", "/"},
      {"/", "/", "/"},
      {"/tmp", "", "/tmp"},
      {"/tmp/", "", "/tmp"},
      {"/tmp", "/", "/tmp"},
      {"a//b", "c/", "a/b/c"},
  };
  for (const Joint& joint : joints) {
    EXPECT_EQ(platform::appendingPathComponent(joint.left, joint.right), joint.joined)
        << joint.left << " " << joint.right;
  }
}

// Returns all strings of at most `length` of the characters.
std::vector<std::string> textsUpTo(std::size_t length, const std::string& characters) {
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; texts[i].size() < length; ++i) {
    for (const char character : characters)
      texts.push_back(texts[i] + character);
  }
  return texts;
}

TEST(PathTest, AgreesWithDirnameAndBasename) {
  for (const std::string& path : textsUpTo(8, "a./")) {
    std::string copy = path;
    // POSIX leaves two leading slashes to the implementation.
    const bool isImplementationDefined = path.rfind("//", 0) == 0 && path.rfind("///", 0) != 0;
    if (!isImplementationDefined) {
      ASSERT_EQ(platform::parentFolder(path), ::dirname(copy.data())) << path;
    }
    copy = path;
    ASSERT_EQ(platform::baseName(path), ::basename(copy.data())) << path;
  }
}

TEST(PathTest, ParentOfTwoLeadingSlashesIsTheRoot) {
  for (const char* path : {"//", "//a", "//a/"})
    EXPECT_EQ(platform::parentFolder(path), "/") << path;
  EXPECT_EQ(platform::parentFolder("//a/b"), "//a");
}

TEST(PathTest, ParentAndNameEndAtTheFirstNul) {
  using namespace std::string_literals;
  EXPECT_EQ(platform::parentFolder("/a/b\0/c"s), "/a");
  EXPECT_EQ(platform::baseName("/a/b\0/c"s), "b");
  EXPECT_EQ(platform::parentFolder("\0/c"s), ".");
  EXPECT_EQ(platform::baseName("\0/c"s), ".");
}

TEST(PathTest, ParentAndNameHaveNoMaximumLength) {
  const std::string parent = "/" + std::string(100000, 'p'), name(100000, 'n');
  EXPECT_EQ(platform::parentFolder(parent + "/" + name), parent);
  EXPECT_EQ(platform::baseName(parent + "/" + name), name);
}

TEST(PathTest, IsThreadSafe) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (const char letter : std::string("abcdefgh")) {
    threads.emplace_back([letter, &wrong] {
      const std::string parent = "/" + std::string(500, letter), name(500, letter);
      for (int i = 0; i < 5000; ++i) {
        if (platform::parentFolder(parent + "/" + name) != parent) ++wrong;
        if (platform::baseName(parent + "/" + name) != name) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(PathTest, AppendsAnExtension) {
  const Joint joints[] = {
      {"/tmp/scratch.old", "tiff", "/tmp/scratch.old.tiff"},
      {"/tmp/scratch.", "tiff", "/tmp/scratch..tiff"},
      {"/tmp/", "tiff", "/tmp.tiff"},
      {"scratch", "tiff", "scratch.tiff"},
      {"~scratch", "tiff", "~scratch.tiff"},
      {"a//b", "c", "a/b.c"},
      {"a", "", "a."},
      {"a", "tar.gz", "a.tar.gz"},
      {".hidden", "txt", ".hidden.txt"},
      {".", "txt", "..txt"},
      {"..", "txt", "...txt"},
      {"a/..", "txt", "a/...txt"},
      {"a", ".", "a.."},
      {"a", "..", "a..."},
  };
  for (const Joint& joint : joints) {
    EXPECT_EQ(platform::appendingPathExtension(joint.left, joint.right), joint.joined)
        << joint.left << " " << joint.right;
  }
}

TEST(PathTest, AppendsNoExtensionWithoutAName) {
  EXPECT_FALSE(platform::appendingPathExtension("", "txt"));
  EXPECT_FALSE(platform::appendingPathExtension("/", "txt"));
  EXPECT_FALSE(platform::appendingPathExtension("//", "txt"));
}

TEST(PathTest, RejectsAnExtensionWithASlash) {
  EXPECT_FALSE(platform::appendingPathExtension("a", "/b"));
  EXPECT_FALSE(platform::appendingPathExtension("a", "b/c"));
  EXPECT_FALSE(platform::appendingPathExtension("a", "b/"));
}

}  // namespace
