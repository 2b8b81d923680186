#include "platform/Text.h"

#include <string>

#include "tests/macos/platform/SystemTest.h"

namespace {

using testing::ElementsAre;
using testing::MatchesRegex;
using UuidTest = macos_test::SystemTest;

TEST_F(UuidTest, IsMadeAndWrittenByCoreFoundationAndBothObjectsAreGivenBack) {
  const std::string text = platform::randomUuidText();
  EXPECT_THAT(text, MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
  EXPECT_NE(text, platform::randomUuidText());
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("CFUUIDCreate", "CFUUIDCreateString", "CFUUIDCreate", "CFUUIDCreateString"));
}

TEST_F(UuidTest, IsEmptyWithoutMemoryForIt) {
  doubles::failCall("CFUUIDCreate", 1);
  EXPECT_EQ(platform::randomUuidText(), "");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("CFUUIDCreate"));
}

TEST_F(UuidTest, IsEmptyWithoutMemoryForItsText) {
  doubles::failCall("CFUUIDCreateString", 1);
  EXPECT_EQ(platform::randomUuidText(), "");
}

}  // namespace
