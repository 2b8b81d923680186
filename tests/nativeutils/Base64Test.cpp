#include "nativeutils/Base64.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <list>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/nativeutils/NativeUtilsLog.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Decoded {
  std::string bytes;
  bool ok;
};

bool operator==(const Decoded& a, const Decoded& b) {
  return a.bytes == b.bytes && a.ok == b.ok;
}

std::ostream& operator<<(std::ostream& out, const Decoded& decoded) {
  return out << '"' << decoded.bytes << '"' << (decoded.ok ? "" : " and failed");
}

Decoded decode(const std::string& text) {
  Decoded result{"", false};
  Base64Decode(text.begin(), text.end(), std::back_inserter(result.bytes), result.ok);
  return result;
}

std::string encode(const std::string& bytes) {
  std::string text;
  Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(text));
  return text;
}

// Uses the generic templates, which other iterators select.
Decoded decodeByTemplate(const std::string& text) {
  const std::list<char> characters(text.begin(), text.end());
  std::vector<char> bytes;
  bool ok = false;
  Base64Decode(characters.begin(), characters.end(), std::back_inserter(bytes), ok);
  return {std::string(bytes.begin(), bytes.end()), ok};
}

std::string encodeByTemplate(const std::string& bytes) {
  const std::list<char> range(bytes.begin(), bytes.end());
  std::vector<char> text;
  Base64Encode(range.begin(), range.end(), std::back_inserter(text));
  return std::string(text.begin(), text.end());
}

Decoded success(std::string_view bytes) {
  return {std::string(bytes), true};
}

Decoded failure(std::string_view bytes) {
  return {std::string(bytes), false};
}

std::string randomBytes(std::size_t size, unsigned seed = 1) {
  std::minstd_rand random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes)
    byte = static_cast<char>(random() >> 8);
  return bytes;
}

TEST(Base64Test, EncodesTheTestVectorsOfTheRfc) {
  const std::array<std::array<const char*, 2>, 7> vectors = {{{"", ""},
                                                              {"f", "Zg=="},
                                                              {"fo", "Zm8="},
                                                              {"foo", "Zm9v"},
                                                              {"foob", "Zm9vYg=="},
                                                              {"fooba", "Zm9vYmE="},
                                                              {"foobar", "Zm9vYmFy"}}};
  for (const auto& [bytes, text] : vectors) {
    EXPECT_EQ(encode(bytes), text);
    EXPECT_EQ(encodeByTemplate(bytes), text);
    EXPECT_EQ(decode(text), success(bytes));
    EXPECT_EQ(decodeByTemplate(text), success(bytes));
  }
}

TEST(Base64Test, EncodesWithoutLineBreaks) {
  EXPECT_EQ(encode(std::string(57, 'x')).size(), 76u);
  EXPECT_EQ(encode(randomBytes(100000)).find_first_of("\r\n"), std::string::npos);
}

TEST(Base64Test, AppendsToTheOutput) {
  std::string text = "text: ";
  const std::string bytes = "foo";
  *Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(text)) = '!';
  EXPECT_EQ(text, "text: Zm9v!");

  bool ok = false;
  std::string out = "bytes: ";
  const std::string encoded = "Zm9v";
  *Base64Decode(encoded.begin(), encoded.end(), std::back_inserter(out), ok) = '!';
  EXPECT_EQ(out, "bytes: foo!");
}

TEST(Base64Test, EncodesEveryLengthLikeTheTemplate) {
  for (std::size_t size = 0; size < 400; ++size)
    EXPECT_EQ(encode(randomBytes(size)), encodeByTemplate(randomBytes(size))) << size;
  for (const unsigned size : {3071u, 3072u, 3073u, 3074u, 3075u, 6144u, 10000u, 100001u})
    EXPECT_EQ(encode(randomBytes(size)), encodeByTemplate(randomBytes(size))) << size;
}

TEST(Base64Test, DecodesItsOwnTextAtEveryLength) {
  for (std::size_t size = 0; size < 400; ++size)
    EXPECT_EQ(decode(encode(randomBytes(size))), success(randomBytes(size))) << size;
  for (const unsigned size : {3071u, 3072u, 3073u, 6143u, 6144u, 6145u, 100001u})
    EXPECT_EQ(decode(encode(randomBytes(size))), success(randomBytes(size))) << size;
}

TEST(Base64Test, SkipsCharactersOutsideItsRange) {
  EXPECT_EQ(decode("Zm9v\nYmFy"), success("foobar"));
  EXPECT_EQ(decode("\r\n Z\tm9-v Ym.Fy{|}~\x7F\x80\xFF,*!\n"), success("foobar"));
  EXPECT_EQ(decode("-\n \t"), success(""));
  EXPECT_EQ(decode("Zg\n=\n="), success("f"));
}

TEST(Base64Test, FailsIfTheTextEndsInsideAGroup) {
  EXPECT_EQ(decode("Zm9"), failure(""));
  EXPECT_EQ(decode("Z"), failure(""));
  EXPECT_EQ(decode("="), failure(""));
  EXPECT_EQ(decode("Zm9vY"), failure("foo"));
  EXPECT_EQ(decode("Zm9v\nYm\n"), failure("foo"));
  EXPECT_EQ(decode("Zm9vZg="), failure("foo"));
}

TEST(Base64Test, FailsAtMisplacedPadding) {
  for (const char* group : {"=m9v", "Z=9v", "==9v", "====", "Zg=a", "Z==="}) {
    EXPECT_EQ(decode(group), failure("")) << group;
    EXPECT_EQ(decode("Zm9v" + std::string(group) + "Zm9v"), failure("foo")) << group;
  }
}

TEST(Base64Test, ContinuesAfterPadding) {
  EXPECT_EQ(decode("QQ==QQ=="), success("AA"));
  EXPECT_EQ(decode("Zm8=Zm9v"), success("fofoo"));
}

TEST(Base64Test, DecodesPaddedGroupsAcrossManyBlocks) {
  std::string text, bytes;
  for (int i = 0; i < 5000; ++i) {
    text += i % 3 == 0 ? "Zg==" : "Zm8=";
    bytes += i % 3 == 0 ? "f" : "fo";
  }
  EXPECT_EQ(decode(text), success(bytes));
}

TEST(Base64Test, IgnoresUnusedPaddingBits) {
  EXPECT_EQ(decode("Zh=="), success("f"));
  EXPECT_EQ(decode("Zm9="), success("fo"));
}

TEST(Base64Test, InvalidCharactersOfTheRangeAreZero) {
  EXPECT_EQ(decode("Zm:v"), success("f`/"));
  for (const char c : std::string(":;<>?@[\\]^_`")) {
    const std::string group{'Z', 'm', c, 'v'};
    EXPECT_EQ(decode(group), success("f`/")) << c;
    EXPECT_EQ(decode(std::string(4, c)), success(std::string_view("\0\0\0", 3))) << c;
  }
}

TEST(Base64Test, KeepsTheBytesBeforeTheError) {
  const std::string bytes = randomBytes(30000);
  EXPECT_EQ(decode(encode(bytes) + "Zg=a"), failure(bytes));
  EXPECT_EQ(decode(encode(bytes) + "Zm9vZ"), failure(bytes + "foo"));
}

TEST(Base64Test, DecodesAllCharactersLikeTheTemplate) {
  const std::string text = encode(randomBytes(96));
  for (std::size_t position = 0; position < text.size(); ++position) {
    for (int c = 0; c < 256; ++c) {
      std::string changed = text;
      changed[position] = static_cast<char>(c);
      ASSERT_EQ(decode(changed), decodeByTemplate(changed)) << "character " << c << " at " << position;
      changed = text;
      changed.insert(position, 1, static_cast<char>(c));
      ASSERT_EQ(decode(changed), decodeByTemplate(changed)) << "character " << c << " inserted at " << position;
    }
  }
}

TEST(Base64Test, DecodesLinesOfEveryLengthLikeTheTemplate) {
  const std::string text = encode(randomBytes(9000));
  for (std::size_t length = 1; length < 140; ++length) {
    for (const char* end : {"\n", "\r\n", "\n  \t", ";", "="}) {
      std::string lines;
      for (std::size_t i = 0; i < text.size(); i += length)
        lines += text.substr(i, length) + end;
      ASSERT_EQ(decode(lines), decodeByTemplate(lines)) << length << " and " << end;
    }
  }
}

TEST(Base64Test, DecodesEveryPrefixLikeTheTemplate) {
  const std::string text = encode(randomBytes(300));
  for (std::size_t length = 27; length < 66; ++length) {
    const std::string lines = text.substr(0, length) + "\n\n\n" + text.substr(length);
    for (std::size_t size = 0; size < 140; ++size) {
      const std::string prefix = lines.substr(0, size);
      ASSERT_EQ(decode(prefix), decodeByTemplate(prefix)) << size << " characters of lines of " << length;
    }
  }
}

class Base64FunctionsTest : public nativeutils_test::LoggedTest {
 protected:
  std::string out = "previous";
};

constexpr const char* kInvalidEncoding = "INFO Invalid arguments to utilEncodeDataInBase64.";
constexpr const char* kInvalidDecoding = "INFO Invalid arguments to utilDecodeBase64Data.";
constexpr const char* kUndecodable = "INFO Failed to decode from base 64.";

TEST_F(Base64FunctionsTest, EncodingAppends) {
  EXPECT_TRUE(utilEncodeDataInBase64("foobar", 6, out));
  EXPECT_EQ(out, "previousZm9vYmFy");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(Base64FunctionsTest, EncodingStopsAtTheFirstNul) {
  EXPECT_TRUE(utilEncodeDataInBase64("A\0B", 3, out));
  EXPECT_TRUE(utilEncodeDataInBase64("A", 1000, out));
  EXPECT_TRUE(utilEncodeDataInBase64("A", -1, out));
  EXPECT_TRUE(utilEncodeDataInBase64("", 5, out));
  EXPECT_EQ(out, "previousQQ==QQ==QQ==");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(Base64FunctionsTest, EncodingRejectsNullAndLengthZero) {
  EXPECT_FALSE(utilEncodeDataInBase64(nullptr, 3, out));
  EXPECT_FALSE(utilEncodeDataInBase64("foo", 0, out));
  EXPECT_EQ(out, "previous");
  EXPECT_THAT(logged(), ElementsAre(kInvalidEncoding, kInvalidEncoding));
}

TEST_F(Base64FunctionsTest, EncodesATextOfTheOutput) {
  out = std::string(1000, 'x');
  out.shrink_to_fit();
  EXPECT_TRUE(utilEncodeDataInBase64(out.c_str() + 997, 3, out));
  EXPECT_EQ(out, std::string(1000, 'x') + "eHh4");
}

TEST_F(Base64FunctionsTest, DecodingReplacesTheOutput) {
  EXPECT_TRUE(utilDecodeBase64Data("Zm9v\nYmFy", 9, out));
  EXPECT_EQ(out, "foobar");
  EXPECT_TRUE(utilDecodeBase64Data("AAAB", -1, out));
  EXPECT_EQ(out, std::string("\0\0\1", 3));
  EXPECT_TRUE(utilDecodeBase64Data("", 7, out));
  EXPECT_EQ(out, "");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(Base64FunctionsTest, DecodingStopsAtTheFirstNul) {
  EXPECT_TRUE(utilDecodeBase64Data("Zm9v\0YmFy", 9, out));
  EXPECT_EQ(out, "foo");
}

TEST_F(Base64FunctionsTest, DecodingRejectsNullAndLengthZero) {
  EXPECT_FALSE(utilDecodeBase64Data("Zm9v", 0, out));
  EXPECT_FALSE(utilDecodeBase64Data(nullptr, 4, out));
  EXPECT_EQ(out, "previous");
  EXPECT_THAT(logged(), ElementsAre(kInvalidDecoding, kInvalidDecoding));
}

TEST_F(Base64FunctionsTest, FailedDecodingKeepsTheOutput) {
  EXPECT_FALSE(utilDecodeBase64Data("Zm9vZg=", 7, out));
  EXPECT_EQ(out, "previous");
  EXPECT_THAT(logged(), ElementsAre(kUndecodable));
}

TEST_F(Base64FunctionsTest, DecodesATextIntoItself) {
  out = encode(randomBytes(5000));
  EXPECT_TRUE(utilDecodeBase64Data(out.c_str(), 1, out));
  EXPECT_EQ(out, randomBytes(5000));
}

}  // namespace
