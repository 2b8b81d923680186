#include "platform/Text.h"

#include <string>

#include "tests/macos/platform/PlatformTest.h"

namespace {

using platform::canonicallyComposed;
using ComposingTest = macos_test::PlatformTest;
using UuidTest = macos_test::PlatformTest;

TEST_F(ComposingTest, ComposesALetterAndItsAccent) {
  EXPECT_EQ(canonicallyComposed("e\xCC\x81"), "\xC3\xA9");
  EXPECT_EQ(canonicallyComposed("\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"), "\xED\x95\x9C");
  EXPECT_EQ(canonicallyComposed("\xEF\xAC\x81"), "\xEF\xAC\x81") << "the ligature fi";
  EXPECT_EQ(canonicallyComposed(""), "");
}

TEST_F(ComposingTest, KeepsATextThatIsNotUtf8) {
  for (const char* text : {"e\xCC\x81\xFF", "e\xCC\x81\xED\xA0\x80", "e\xCC\x81\xC0\xAF", "e\xCC"})
    EXPECT_EQ(canonicallyComposed(text), text);
}

TEST_F(UuidTest, IsRandomAndOfVersion4) {
  const std::string text = platform::randomUuidText();
  EXPECT_THAT(text, testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
  EXPECT_NE(text, platform::randomUuidText());
}

TEST_F(UuidTest, IsEmptyIfOutOfMemory) {
  for (const char* call : {"CFUUIDCreate", "CFUUIDCreateString"}) {
    doubles::failNextCall(call);
    EXPECT_EQ(platform::randomUuidText(), "") << call;
  }
}

}  // namespace
