#include "logging/FileEnd.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

class FileEndTest : public testing::Test {
 protected:
  FileEndTest() {
    support::writeFile(path, "");
    end.open(path);
  }

  void append(const std::string& text) { std::ofstream(path, std::ios::app) << text; }

  const support::TemporaryFolder folder;
  const std::string path = folder / "file";
  tarn::FileEnd end;
};

TEST_F(FileEndTest, AnEmptyFileEndsWell) {
  EXPECT_FALSE(end.isInsideLine());
}

TEST_F(FileEndTest, ANewlineEndsALine) {
  append("a\n");
  EXPECT_FALSE(end.isInsideLine());
}

TEST_F(FileEndTest, AnythingElseDoesNot) {
  append("a\nb");
  EXPECT_TRUE(end.isInsideLine());
}

TEST_F(FileEndTest, WhatWeWroteOurselvesIsNotLookedAtAgain) {
  append("a\n");
  EXPECT_FALSE(end.isInsideLine());
  EXPECT_TRUE(end.append("b"));
  EXPECT_FALSE(end.isInsideLine());
  EXPECT_EQ(support::contentsOf(path), "a\nb");
}

TEST_F(FileEndTest, WhatOthersWroteAfterUsIs) {
  append("a\n");
  end.isInsideLine();
  end.append("b\n");
  append("c");
  EXPECT_TRUE(end.isInsideLine());
}

TEST_F(FileEndTest, AFailedWriteMakesItLookAgain) {
  support::Child writer([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{3, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &full);
    const bool whole = end.append("a\nb\n");
    return !whole && end.isInsideLine() ? 0 : 1;
  });
  EXPECT_EQ(writer.wait(), 0);
  EXPECT_EQ(support::contentsOf(path), "a\nb");
}

TEST_F(FileEndTest, AFileThatCannotBeReadEndsWell) {
  end.open(folder / "missing");
  EXPECT_FALSE(end.isInsideLine());
  EXPECT_FALSE(end.append("a\n"));
}

}  // namespace
