#include "nativeutils/Strings.h"

#include <dlfcn.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <ctime>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Clock.h"
#include "tests/support/Files.h"

namespace {

// What this process's C library is made to fail at.
bool clockFails = false;

template <typename Function>
Function theRealOne(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// This takes the place of the C library's.
extern "C" int gettimeofday(timeval* now, void* zone) noexcept {
  static const auto real = theRealOne<int (*)(timeval*, void*)>("gettimeofday");
  return clockFails ? -1 : real(now, zone);
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StringsTest : public nativeutils_test::LoggedTest {
 protected:
  std::string out = "former";
};

// Calls of one output argument, for the length of a line.
template <typename Argument>
std::string filled(bool (*function)(Argument, std::string&), Argument argument) {
  std::string out = "former";
  EXPECT_TRUE(function(argument, out));
  return out;
}

std::string nfc(const char* text) {
  return filled<const char*>(utilGetNFCNativeStringFromArray, text);
}

std::string parentOf(std::string path) {
  EXPECT_TRUE(utilRemoveFileSpec(path));
  return path;
}

std::string baseNameOf(const std::string& path) {
  return filled<const std::string&>(utilGetFilePathBaseName, path);
}

TEST_F(StringsTest, ConversionsBetweenKindsOfTextAreCopies) {
  const char* text = "h\xC3\xB6he \xFF\n";
  EXPECT_EQ(filled<const char*>(utilGetStringFromNativeString, text), text);
  EXPECT_EQ(filled<const char*>(utilGetNativeStringFromArray, text), text);
  EXPECT_EQ(filled<const std::string&>(utilGetNativeStringFromString, text), text);
  EXPECT_EQ(filled<const char*>(utilGetStringFromNativeString, ""), "");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, ACopyOfAStringKeepsItsNulCharacters) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(filled<const std::string&>(utilGetNativeStringFromString, text), text);
}

TEST_F(StringsTest, AStringMayBeCopiedOntoItself) {
  out = "itself";
  EXPECT_TRUE(utilGetNativeStringFromString(out, out));
  EXPECT_EQ(out, "itself");
  EXPECT_TRUE(utilGetNFCNativeStringFromArray(out.c_str(), out));
  EXPECT_EQ(out, "itself");
}

TEST_F(StringsTest, ALetterAndItsAccentAreComposed) {
  EXPECT_EQ(nfc("e\xCC\x81"), "\xC3\xA9");
  EXPECT_EQ(nfc("plain"), "plain");
  EXPECT_EQ(nfc(""), "");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, ATextThatIsNotUtf8IsCopiedUncomposed) {
  EXPECT_EQ(nfc("e\xCC\x81\xFF"), "e\xCC\x81\xFF");
}

TEST_F(StringsTest, NumbersArePrintedWithoutPaddingOrGrouping) {
  EXPECT_EQ(filled<int>(utilGetNativeStringFromInt, 0), "0");
  EXPECT_EQ(filled<int>(utilGetNativeStringFromInt, 1234567), "1234567");
  EXPECT_EQ(filled<int>(utilGetNativeStringFromInt, INT_MAX), "2147483647");
  EXPECT_EQ(filled<int>(utilGetNativeStringFromInt, INT_MIN), "-2147483648");
  EXPECT_EQ(filled<long>(utilGetNativeStringFromLong, -5), "-5");
  EXPECT_EQ(filled<long>(utilGetNativeStringFromLong, LONG_MIN), std::to_string(LONG_MIN));
  EXPECT_EQ(filled<long long>(utilGetStringFromLongLong, LLONG_MAX), "9223372036854775807");
  EXPECT_EQ(filled<long long>(utilGetStringFromLongLong, LLONG_MIN), "-9223372036854775808");
}

TEST_F(StringsTest, ATextIsReadUpToTheEndOfItsLeadingNumber) {
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

class BoundedCopy : public StringsTest {
 protected:
  char dst[4] = {'?', '?', '?', '?'};
};

constexpr const char* tooSmall = "ERROR Failed to Copy SrcStr to DestStr, error: destination buffer is small";

TEST_F(BoundedCopy, TakesATextThatJustFits) {
  EXPECT_TRUE(utilStrCpy(dst, 4, "abc", 3));
  EXPECT_STREQ(dst, "abc");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(BoundedCopy, CutsATextThatDoesNotFit) {
  EXPECT_FALSE(utilStrCpy(dst, 3, "abc", 3));
  EXPECT_STREQ(dst, "ab");
  EXPECT_EQ(dst[3], '?');
  EXPECT_THAT(logged(), ElementsAre(tooSmall));
}

TEST_F(BoundedCopy, HasNoRoomButForTheTerminatorInOneByte) {
  EXPECT_TRUE(utilStrCpy(dst, 1, "", 0));
  EXPECT_STREQ(dst, "");
  EXPECT_FALSE(utilStrCpy(dst, 1, "a", 1));
  EXPECT_STREQ(dst, "");
  EXPECT_THAT(logged(), ElementsAre(tooSmall));
}

TEST_F(BoundedCopy, DoesNotLookAtTheLengthOfTheSource) {
  for (const int length : {-1, 0, 1, INT_MAX}) {
    EXPECT_TRUE(utilStrCpy(dst, 4, "abc", length));
    EXPECT_STREQ(dst, "abc");
  }
}

TEST_F(BoundedCopy, RefusesADestinationOfNoBytes) {
  EXPECT_FALSE(utilStrCpy(dst, 0, "abc", 3));
  EXPECT_EQ(dst[0], '?');
  EXPECT_THAT(logged(), ElementsAre("ERROR destination or source length is zero"));
}

TEST_F(BoundedCopy, RefusesNullPointersBeforeItLooksAtTheSize) {
  EXPECT_FALSE(utilStrCpy(dst, 0, nullptr, 0));
  EXPECT_FALSE(utilStrCpy(dst, 4, nullptr, 0));
  EXPECT_FALSE(utilStrCpy(nullptr, 4, "abc", 3));
  EXPECT_EQ(dst[0], '?');
  EXPECT_THAT(logged(), ElementsAre("ERROR srcPtr or dstPtr is NULL", "ERROR srcPtr or dstPtr is NULL",
                                    "ERROR srcPtr or dstPtr is NULL"));
}

TEST_F(BoundedCopy, FindsANegativeSizeTooSmallForAnything) {
  EXPECT_FALSE(utilStrCpy(dst, -1, "", 0));
  EXPECT_FALSE(utilStrCpy(dst, INT_MIN, "abc", 3));
  EXPECT_EQ(dst[0], '?');
  EXPECT_THAT(logged(), ElementsAre(tooSmall, tooSmall));
}

TEST_F(StringsTest, AUuidHas36UpperCaseCharactersInFiveGroups) {
  ASSERT_TRUE(utilGetUUIDString(out));
  ASSERT_EQ(out.size(), 36u);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const bool joint = i == 8 || i == 13 || i == 18 || i == 23;
    EXPECT_EQ(out[i] == '-', joint) << out;
    EXPECT_TRUE(joint || std::string("0123456789ABCDEF").find(out[i]) != std::string::npos) << out;
  }
}

TEST_F(StringsTest, NoTwoUuidsAreTheSameOnSeveralThreads) {
  std::vector<std::vector<std::string>> made(4);
  std::vector<std::thread> threads;
  for (std::vector<std::string>& texts : made) {
    threads.emplace_back([&texts] {
      texts.resize(1000);
      for (std::string& text : texts)
        utilGetUUIDString(text);
    });
  }
  for (std::thread& thread : threads)
    thread.join();

  std::set<std::string> different;
  for (const std::vector<std::string>& texts : made)
    different.insert(texts.begin(), texts.end());
  EXPECT_EQ(different.size(), 4000u);
}

TEST_F(StringsTest, TheBaseNameIsTheLastComponentOfAPath) {
  EXPECT_EQ(baseNameOf("/a/b/"), "b");
  EXPECT_EQ(baseNameOf("/a/b.app"), "b.app");
  EXPECT_EQ(baseNameOf("b"), "b");
  EXPECT_EQ(baseNameOf("/"), "/");
  EXPECT_EQ(baseNameOf("///"), "/");
  EXPECT_EQ(baseNameOf(""), ".");
  EXPECT_EQ(baseNameOf("/x/" + std::string(PATH_MAX, 'n')), std::string(PATH_MAX, 'n'));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(StringsTest, APathIsNotChangedByAskingForItsBaseName) {
  const std::string path = "/a/b/";
  const std::string copy = path;  // may share its bytes with the original
  EXPECT_TRUE(utilGetFilePathBaseName(path, out));
  EXPECT_EQ(path, "/a/b/");
  EXPECT_EQ(copy, "/a/b/");
}

TEST_F(StringsTest, RemovingTheFileSpecLeavesTheParent) {
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

TEST_F(StringsTest, TextsAreComparedWithoutRegardToCase) {
  EXPECT_EQ(utilStringCompareCaseInsensitive("Kelvo.LOG", "kELVO.log"), 0);
  EXPECT_LT(utilStringCompareCaseInsensitive("abc", "ABD"), 0);
  EXPECT_GT(utilStringCompareCaseInsensitive("b", "A"), 0);
  EXPECT_LT(utilStringCompareCaseInsensitive("", "a"), 0);
}

TEST_F(StringsTest, TheTimeIsCountedInSecondsSinceTheEpoch) {
  const std::time_t before = support::currentSecond();
  const std::uint64_t now = utilGetCurrTime();
  EXPECT_GE(now, static_cast<std::uint64_t>(before));
  EXPECT_LE(now, static_cast<std::uint64_t>(support::currentSecond()));
}

TEST_F(StringsTest, AClockThatCannotBeReadIsLoggedAndGivesZero) {
  forget();
  clockFails = true;
  const std::uint64_t now = utilGetCurrTime();
  clockFails = false;
  EXPECT_EQ(now, 0u);
  EXPECT_THAT(logged(), ElementsAre("ERROR Unable to get current time using gettimeofday"));
}

TEST_F(StringsTest, APathExistsWhenAnythingIsThere) {
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

TEST_F(StringsTest, PoolsNestAndAreNeverNull) {
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
