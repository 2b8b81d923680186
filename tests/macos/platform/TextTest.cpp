#include "platform/Text.h"
#include "tests/macos/platform/SystemTest.h"

namespace {

using platform::canonicallyComposed;
using ComposingTest = macos_test::SystemTest;

TEST_F(ComposingTest, MakesOneCharacterOfALetterAndItsAccent) {
  EXPECT_EQ(canonicallyComposed("e\xCC\x81"), "\xC3\xA9");
  EXPECT_EQ(canonicallyComposed("\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"), "\xED\x95\x9C");
  EXPECT_EQ(canonicallyComposed("\xEF\xAC\x81"), "\xEF\xAC\x81") << "the ligature fi";
  EXPECT_EQ(canonicallyComposed(""), "");
}

TEST_F(ComposingTest, LeavesATextThatIsNotUtf8AsItIs) {
  for (const char* text : {"e\xCC\x81\xFF", "e\xCC\x81\xED\xA0\x80", "e\xCC\x81\xC0\xAF", "e\xCC"})
    EXPECT_EQ(canonicallyComposed(text), text);
}

}  // namespace
