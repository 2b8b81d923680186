#include "platform/Text.h"

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "tests/support/Child.h"

namespace {

TEST(Utf8Test, AcceptsTheLimitsOfEachLength) {
  EXPECT_TRUE(platform::isUtf8(""));
  EXPECT_TRUE(platform::isUtf8("plain"));
  EXPECT_TRUE(platform::isUtf8("\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xEF\xBF\xBF \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"));
}

TEST(Utf8Test, AcceptsNul) {
  EXPECT_TRUE(platform::isUtf8(std::string_view("\0", 1)));
  EXPECT_TRUE(platform::isUtf8(std::string_view("a\0\0\xC3\xA4\0", 6)));
  EXPECT_FALSE(platform::isUtf8(std::string_view("a\0\xFFz", 4)));
}

TEST(Utf8Test, RejectsMalformedSequences) {
  for (const char* bytes : {"\x80", "\xC3", "a\xC3", "\xC3(", "\xE2\x82", "\xF0\x9F\x98", "\xC0\xAF", "\xE0\x80\xAF",
                            "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFE", "\xFF"}) {
    EXPECT_FALSE(platform::isUtf8(bytes)) << bytes;
  }
}

TEST(Utf8Test, AgreesWithIcuAboutEveryLead) {
  int differences = 0;
  std::array<char, 4> bytes{};
  const auto compare = [&](std::size_t length) {
    const icu::StringPiece piece(bytes.data(), static_cast<std::int32_t>(length));
    const bool isMalformed = icu::UnicodeString::fromUTF8(piece).indexOf(char16_t{0xFFFD}) >= 0;
    if (platform::isUtf8({bytes.data(), length}) == isMalformed) ++differences;
  };
  for (int first = 0; first < 256; ++first) {
    bytes[0] = static_cast<char>(first);
    compare(1);
    for (int second = 0; second < 256; ++second) {
      bytes[1] = static_cast<char>(second);
      compare(2);
      for (const char third : {'\0', '\x7F', '\x80', '\xBF', '\xC0', '\xFF'}) {
        bytes[2] = third;
        compare(3);
        for (const char fourth : {'\0', '\x7F', '\x80', '\xBF', '\xC0', '\xFF'}) {
          bytes[3] = fourth;
          compare(4);
        }
      }
    }
  }
  EXPECT_EQ(differences, 0);
}

TEST(ComposingTest, ComposesALetterAndItsAccent) {
  EXPECT_EQ(platform::canonicallyComposed("e\xCC\x81"), "\xC3\xA9");
  EXPECT_EQ(platform::canonicallyComposed("\xE2\x84\xAB"), "\xC3\x85");
  EXPECT_EQ(platform::canonicallyComposed("\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"), "\xED\x95\x9C");
}

TEST(ComposingTest, KeepsCompatibilityForms) {
  EXPECT_EQ(platform::canonicallyComposed("\xEF\xAC\x81"), "\xEF\xAC\x81");  // the ligature fi
}

TEST(ComposingTest, KeepsTextThatIsNotUtf8) {
  EXPECT_EQ(platform::canonicallyComposed("e\xCC\x81\xFF"), "e\xCC\x81\xFF");
}

std::string utf8Of(const icu::UnicodeString& text) {
  std::string bytes;
  text.toUTF8String(bytes);
  return bytes;
}

bool isCompared(UChar32 c) {
  // The two libraries may support different versions of Unicode.
  constexpr std::uint8_t kMaxVersion = 14;
  UVersionInfo age;
  u_charAge(c, age);
  return age[0] != 0 && age[0] <= kMaxVersion && !U_IS_SURROGATE(c);
}

TEST(ComposingTest, AgreesWithIcuOnEveryCharacter) {
  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2* peer = icu::Normalizer2::getNFCInstance(error);
  ASSERT_TRUE(U_SUCCESS(error));
  const icu::UnicodeString accents[] = {u"", u"\u0301", u"\u0323\u0307", u"\u0307\u0323", u"\u0345\u0300\u11A8"};
  int differences = 0;
  for (UChar32 c = 1; c <= 0x10FFFF; ++c) {
    if (!isCompared(c)) continue;
    for (const icu::UnicodeString& accent : accents) {
      const icu::UnicodeString text = icu::UnicodeString(c) + accent;
      if (platform::canonicallyComposed(utf8Of(text).c_str()) == utf8Of(peer->normalize(text, error))) continue;
      ++differences;
      ADD_FAILURE() << "U+" << std::hex << c << " and " << utf8Of(accent);
      ASSERT_LT(differences, 20);
    }
  }
}

TEST(RandomUuidTest, HasVersionFourInUpperCase) {
  for (int i = 0; i < 1000; ++i) {
    const std::string text = platform::randomUuidText();
    ASSERT_EQ(text.size(), 36u);
    EXPECT_EQ(text.find_first_not_of("0123456789ABCDEF-"), std::string::npos) << text;
    EXPECT_EQ(text[14], '4') << text;
    EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
  }
}

TEST(RandomUuidTest, DiffersInAForkedChild) {
  (void)platform::randomUuidText();  // initializes any static state before the fork
  const support::Shared<std::array<char, 37>> childText;
  support::Child child([&] {
    std::strcpy(childText->data(), platform::randomUuidText().c_str());
    return 0;
  });
  ASSERT_EQ(child.wait(), 0);
  EXPECT_NE(platform::randomUuidText(), childText->data());
}

}  // namespace
