#include "logging/AppendFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <string>

#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

class AppendFileTest : public testing::Test {
 protected:
  AppendFileTest() {
    support::writeFile(path, "");
    end.open(path);
  }

  void append(const std::string& text) { std::ofstream(path, std::ios::app) << text; }

  const support::TemporaryFolder folder;
  const std::string path = folder / "file";
  tarn::AppendFile end;
};

TEST_F(AppendFileTest, EmptyFileIsNotInsideLine) {
  EXPECT_FALSE(end.isInsideLine());
}

TEST_F(AppendFileTest, NewlineEndsALine) {
  append("a\n");
  EXPECT_FALSE(end.isInsideLine());
}

TEST_F(AppendFileTest, OtherBytesDoNotEndALine) {
  append("a\nb");
  EXPECT_TRUE(end.isInsideLine());
}

TEST_F(AppendFileTest, DoesNotCheckItsOwnAppends) {
  append("a\n");
  EXPECT_FALSE(end.isInsideLine());
  EXPECT_TRUE(end.append("b"));
  EXPECT_FALSE(end.isInsideLine());
  EXPECT_EQ(support::contentsOf(path), "a\nb");
}

TEST_F(AppendFileTest, ChecksAppendsOfOthers) {
  append("a\n");
  end.isInsideLine();
  end.append("b\n");
  append("c");
  EXPECT_TRUE(end.isInsideLine());
}

TEST_F(AppendFileTest, ChecksAgainAfterAFailedWrite) {
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

TEST_F(AppendFileTest, MissingFileIsNotInsideLine) {
  end.open(folder / "missing");
  EXPECT_FALSE(end.isInsideLine());
  EXPECT_FALSE(end.append("a\n"));
}

}  // namespace
