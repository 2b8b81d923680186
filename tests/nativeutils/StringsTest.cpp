#include "nativeutils/Strings.h"

#include <dlfcn.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Clock.h"
#include "tests/support/Files.h"

namespace {

bool clockFails = false;

template <typename Function>
Function realFunction(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// Replaces the function of the C library.
extern "C" int gettimeofday(timeval* now, void* zone) noexcept {
  static const auto real = realFunction<int (*)(timeval*, void*)>("gettimeofday");
  return clockFails ? -1 : real(now, zone);
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StringsTest : public nativeutils_test::LoggedTest {
 protected:
  std::string out = "previous";
};

// Returns the output argument of a function, which must succeed.
template <typename Argument>
std::string outputOf(bool (*function)(Argument, std::string&), Argument argument) {
  std::string out = "previous";
  EXPECT_TRUE(function(argument, out));
  return out;
}

std::string nfc(const char* text) {
  return outputOf<const char*>(utilGetNFCNativeStringFromArray, text);
}

std::string parentOf(std::string path) {
  EXPECT_TRUE(utilRemoveFileSpec(path));
  return path;
}

std::string baseNameOf(const std::string& path) {
  return outputOf<const std::string&>(utilGetFilePathBaseName, path);
}

TEST_F(StringsTest, ConversionsCopyTheText) {
  const char* text = "h\xC3\xB6he \xFF\n";
  EXPECT_EQ(outputOf<const char*>(utilGetStringFromNativeString, text), text);
  EXPECT_EQ(outputOf<const char*>(utilGetNativeStringFromArray, text), text);
  EXPECT_EQ(outputOf<const std::string&>(utilGetNativeStringFromString, text), text);
  EXPECT_EQ(outputOf<const char*>(utilGetStringFromNativeString, ""), "");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, CopiesNulCharactersOfAString) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(outputOf<const std::string&>(utilGetNativeStringFromString, text), text);
}

TEST_F(StringsTest, CopiesAStringToItself) {
  out = "text";
  EXPECT_TRUE(utilGetNativeStringFromString(out, out));
  EXPECT_EQ(out, "text");
  EXPECT_TRUE(utilGetNFCNativeStringFromArray(out.c_str(), out));
  EXPECT_EQ(out, "text");
}

TEST_F(StringsTest, ComposesALetterAndItsAccent) {
  EXPECT_EQ(nfc("e\xCC\x81"), "\xC3\xA9");
  EXPECT_EQ(nfc("plain"), "plain");
  EXPECT_EQ(nfc(""), "");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, CopiesInvalidUtf8Unchanged) {
  EXPECT_EQ(nfc("e\xCC\x81\xFF"), "e\xCC\x81\xFF");
}

TEST_F(StringsTest, FormatsNumbersWithoutPaddingOrGrouping) {
  EXPECT_EQ(outputOf<int>(utilGetNativeStringFromInt, 0), "0");
  EXPECT_EQ(outputOf<int>(utilGetNativeStringFromInt, 1234567), "1234567");
  EXPECT_EQ(outputOf<int>(utilGetNativeStringFromInt, INT_MAX), "2147483647");
  EXPECT_EQ(outputOf<int>(utilGetNativeStringFromInt, INT_MIN), "-2147483648");
  EXPECT_EQ(outputOf<long>(utilGetNativeStringFromLong, -5), "-5");
  EXPECT_EQ(outputOf<long>(utilGetNativeStringFromLong, LONG_MIN), std::to_string(LONG_MIN));
  EXPECT_EQ(outputOf<long long>(utilGetStringFromLongLong, LLONG_MAX), "9223372036854775807");
  EXPECT_EQ(outputOf<long long>(utilGetStringFromLongLong, LLONG_MIN), "-9223372036854775808");
}

TEST_F(StringsTest, ParsesTheLeadingNumber) {
  EXPECT_EQ(utilGetIntFromString("12abc"), 12);
  EXPECT_EQ(utilGetIntFromString("abc"), 0);
  EXPECT_EQ(utilGetIntFromString(" -7"), -7);
  EXPECT_EQ(utilGetIntFromString("\t\n+8 9"), 8);
  EXPECT_EQ(utilGetIntFromString(""), 0);
  EXPECT_EQ(utilGetIntFromString("- 7"), 0);
  EXPECT_EQ(utilGetIntFromString("0x10"), 0);
  EXPECT_EQ(utilGetIntFromString("-2147483648"), INT_MIN);
  EXPECT_EQ(utilGetLongLongFromString("9223372036854775807.5"), LLONG_MAX);
  EXPECT_EQ(utilGetLongLongFromString("-9223372036854775808"), LLONG_MIN);
  EXPECT_EQ(utilGetLongLongFromString("none"), 0);
  EXPECT_THAT(logged(), IsEmpty());
}

class BoundedCopyTest : public StringsTest {
 protected:
  char dst[4] = {'?', '?', '?', '?'};
};

constexpr const char* kTooSmall = "ERROR Failed to Copy SrcStr to DestStr, error: destination buffer is small";

TEST_F(BoundedCopyTest, CopiesATextThatFillsTheArray) {
  EXPECT_TRUE(utilStrCpy(dst, 4, "abc", 3));
  EXPECT_STREQ(dst, "abc");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(BoundedCopyTest, TruncatesALongerText) {
  EXPECT_FALSE(utilStrCpy(dst, 3, "abc", 3));
  EXPECT_STREQ(dst, "ab");
  EXPECT_EQ(dst[3], '?');
  EXPECT_THAT(logged(), ElementsAre(kTooSmall));
}

TEST_F(BoundedCopyTest, OneByteHoldsOnlyTheTerminator) {
  EXPECT_TRUE(utilStrCpy(dst, 1, "", 0));
  EXPECT_STREQ(dst, "");
  EXPECT_FALSE(utilStrCpy(dst, 1, "a", 1));
  EXPECT_STREQ(dst, "");
  EXPECT_THAT(logged(), ElementsAre(kTooSmall));
}

TEST_F(BoundedCopyTest, IgnoresTheLengthOfTheSource) {
  for (const int length : {-1, 0, 1, INT_MAX}) {
    EXPECT_TRUE(utilStrCpy(dst, 4, "abc", length));
    EXPECT_STREQ(dst, "abc");
  }
}

TEST_F(BoundedCopyTest, RejectsAnEmptyArray) {
  EXPECT_FALSE(utilStrCpy(dst, 0, "abc", 3));
  EXPECT_EQ(dst[0], '?');
  EXPECT_THAT(logged(), ElementsAre("ERROR destination or source length is zero"));
}

TEST_F(BoundedCopyTest, RejectsNullBeforeItChecksTheSize) {
  EXPECT_FALSE(utilStrCpy(dst, 0, nullptr, 0));
  EXPECT_FALSE(utilStrCpy(dst, 4, nullptr, 0));
  EXPECT_FALSE(utilStrCpy(nullptr, 4, "abc", 3));
  EXPECT_EQ(dst[0], '?');
  EXPECT_THAT(logged(), ElementsAre("ERROR srcPtr or dstPtr is NULL", "ERROR srcPtr or dstPtr is NULL",
                                    "ERROR srcPtr or dstPtr is NULL"));
}

TEST_F(BoundedCopyTest, RejectsANegativeSize) {
  EXPECT_FALSE(utilStrCpy(dst, -1, "", 0));
  EXPECT_FALSE(utilStrCpy(dst, INT_MIN, "abc", 3));
  EXPECT_EQ(dst[0], '?');
  EXPECT_THAT(logged(), ElementsAre(kTooSmall, kTooSmall));
}

TEST_F(StringsTest, AUuidHasFiveGroupsInUpperCase) {
  ASSERT_TRUE(utilGetUUIDString(out));
  ASSERT_EQ(out.size(), 36u);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const bool isSeparator = i == 8 || i == 13 || i == 18 || i == 23;
    EXPECT_EQ(out[i] == '-', isSeparator) << out;
    EXPECT_TRUE(isSeparator || std::string("0123456789ABCDEF").find(out[i]) != std::string::npos) << out;
  }
}

TEST_F(StringsTest, UuidsOfSeveralThreadsDiffer) {
  std::vector<std::vector<std::string>> uuids(4);
  std::vector<std::thread> threads;
  for (std::vector<std::string>& texts : uuids) {
    threads.emplace_back([&texts] {
      texts.resize(1000);
      for (std::string& text : texts)
        utilGetUUIDString(text);
    });
  }
  for (std::thread& thread : threads)
    thread.join();

  std::set<std::string> unique;
  for (const std::vector<std::string>& texts : uuids)
    unique.insert(texts.begin(), texts.end());
  EXPECT_EQ(unique.size(), 4000u);
}

TEST_F(StringsTest, ReturnsTheBaseName) {
  EXPECT_EQ(baseNameOf("/a/b/"), "b");
  EXPECT_EQ(baseNameOf("/a/b.app"), "b.app");
  EXPECT_EQ(baseNameOf("b"), "b");
  EXPECT_EQ(baseNameOf("/"), "/");
  EXPECT_EQ(baseNameOf("///"), "/");
  EXPECT_EQ(baseNameOf(""), ".");
  EXPECT_EQ(baseNameOf("/x/" + std::string(PATH_MAX, 'n')), std::string(PATH_MAX, 'n'));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, BaseNameDoesNotChangeThePath) {
  const std::string path = "/a/b/";
  const std::string copy = path;  // may share its bytes with the original
  EXPECT_TRUE(utilGetFilePathBaseName(path, out));
  EXPECT_EQ(path, "/a/b/");
  EXPECT_EQ(copy, "/a/b/");
}

TEST_F(StringsTest, RemovesTheLastComponent) {
  EXPECT_EQ(parentOf("/Applications/Tool.app"), "/Applications");
  EXPECT_EQ(parentOf("/a/b/c"), "/a/b");
  EXPECT_EQ(parentOf("/a/b/"), "/a");
  EXPECT_EQ(parentOf("/a"), "/");
  EXPECT_EQ(parentOf("/"), "/");
  EXPECT_EQ(parentOf("Tool.app"), "");
  EXPECT_EQ(parentOf(""), "");
  EXPECT_EQ(parentOf("~/file"), "~");
  EXPECT_EQ(parentOf("/h\xC3\xB6he/\xFF/x"), "/h\xC3\xB6he/\xFF");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, ComparesWithoutCase) {
  EXPECT_EQ(utilStringCompareCaseInsensitive("Kelvo.LOG", "kELVO.log"), 0);
  EXPECT_LT(utilStringCompareCaseInsensitive("abc", "ABD"), 0);
  EXPECT_GT(utilStringCompareCaseInsensitive("b", "A"), 0);
  EXPECT_LT(utilStringCompareCaseInsensitive("", "a"), 0);
}

TEST_F(StringsTest, ReturnsTheSecondsSinceTheEpoch) {
  const std::time_t before = support::currentSecond();
  const std::uint64_t now = utilGetCurrTime();
  EXPECT_GE(now, static_cast<std::uint64_t>(before));
  EXPECT_LE(now, static_cast<std::uint64_t>(support::currentSecond()));
}

TEST_F(StringsTest, ReturnsZeroIfTheClockFails) {
  forget();
  clockFails = true;
  const std::uint64_t now = utilGetCurrTime();
  clockFails = false;
  EXPECT_EQ(now, 0u);
  EXPECT_THAT(logged(), ElementsAre("ERROR Unable to get current time using gettimeofday"));
}

TEST_F(StringsTest, AnObjectOfAnyKindExists) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "file", "");
  ASSERT_EQ(::symlink("missing", (folder / "dangling").c_str()), 0);
  EXPECT_TRUE(utilPathExists(folder.path()));
  EXPECT_TRUE(utilPathExists(folder / "file"));
  EXPECT_TRUE(utilPathExists(folder / "dangling"));
  EXPECT_FALSE(utilPathExists(folder / "missing"));
  EXPECT_FALSE(utilPathExists(folder / "missing/child"));
  EXPECT_FALSE(utilPathExists(folder / "file/child"));
  EXPECT_FALSE(utilPathExists(""));
  EXPECT_FALSE(utilPathExists("/" + std::string(2 * PATH_MAX, 'n')));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, PoolsAreNestedAndNeverNull) {
  void* outer = utilGetPool();
  void* inner = utilGetPool();
  EXPECT_NE(outer, nullptr);
  EXPECT_NE(inner, nullptr);
  utilReleasePool(inner);
  utilReleasePool(outer);
  utilReleasePool(nullptr);
  EXPECT_THAT(logged(), IsEmpty());
}

}  // namespace
