#include "logging/FileEnd.h"

#include <gtest/gtest.h>

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
  append("b");
  end.movedBy(1);
  EXPECT_FALSE(end.isInsideLine());
}

TEST_F(FileEndTest, WhatOthersWroteAfterUsIs) {
  append("a\n");
  end.isInsideLine();
  append("b\n");
  end.movedBy(2);
  append("c");
  EXPECT_TRUE(end.isInsideLine());
}

TEST_F(FileEndTest, AFailedWriteMakesItLookAgain) {
  append("a\n");
  end.isInsideLine();
  end.forget();
  append("b");
  EXPECT_TRUE(end.isInsideLine());
}

TEST_F(FileEndTest, AFileThatCannotBeReadEndsWell) {
  end.open(folder / "missing");
  EXPECT_FALSE(end.isInsideLine());
}

}  // namespace
