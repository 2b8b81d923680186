#include "platform/PathString.h"

#include <gtest/gtest.h>

namespace {

struct Row {
  const char* path;
  const char* last;
  const char* withoutLast;
  const char* extension;
  const char* withoutExtension;
};

const Row rows[] = {
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

TEST(PathString, TheLastComponentIsWhatFollowsTheLastSlashThatCounts) {
  for (const Row& row : rows)
    EXPECT_EQ(platform::lastPathComponent(row.path), row.last) << row.path;
}

TEST(PathString, DeletingTheLastComponentLeavesItsFolder) {
  for (const Row& row : rows)
    EXPECT_EQ(platform::deletingLastPathComponent(row.path), row.withoutLast) << row.path;
}

TEST(PathString, TheExtensionFollowsTheLastDotOfTheLastComponent) {
  for (const Row& row : rows)
    EXPECT_EQ(platform::pathExtension(row.path), row.extension) << row.path;
}

TEST(PathString, DeletingTheExtensionTakesTheDotAlong) {
  for (const Row& row : rows)
    EXPECT_EQ(platform::deletingPathExtension(row.path), row.withoutExtension) << row.path;
}

struct Joint {
  const char* left;
  const char* right;
  const char* joined;
};

TEST(PathString, AppendingAComponentPutsExactlyOneSlashBetween) {
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

TEST(PathString, TheParentFolderIsThatOfDirname) {
  const std::pair<const char*, const char*> parents[] = {
      {"/usr/lib", "/usr"},      {"/usr/", "/"},         {"usr", "."}, {"/", "/"}, {".", "."}, {"..", "."}, {"", "."},
      {"/tmp//a/b/", "/tmp//a"}, {"/tmp//a///", "/tmp"},
  };
  for (const auto& [path, parent] : parents)
    EXPECT_EQ(platform::parentFolder(path), parent) << path;
}

TEST(PathString, AppendingAnExtensionExtendsTheLastComponent) {
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

TEST(PathString, NothingIsExtendedThatHasNoName) {
  EXPECT_FALSE(platform::appendingPathExtension("", "txt"));
  EXPECT_FALSE(platform::appendingPathExtension("/", "txt"));
  EXPECT_FALSE(platform::appendingPathExtension("//", "txt"));
}

TEST(PathString, AnExtensionWithASlashIsRefused) {
  EXPECT_FALSE(platform::appendingPathExtension("a", "/b"));
  EXPECT_FALSE(platform::appendingPathExtension("a", "b/c"));
  EXPECT_FALSE(platform::appendingPathExtension("a", "b/"));
}

}  // namespace
