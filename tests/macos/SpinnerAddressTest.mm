#include "app/cocoa/CocoaSignInWindow.h"

#include <optional>
#include <string>

#include "tests/macos/CocoaTest.h"

namespace {

class SpinnerAddressTest : public CocoaTest {
 protected:
  // Returns the address that the flow receives when the page at this path has finished.
  std::optional<std::string> reported(const std::string& path) {
    bridge.loadHTML("<html></html>", path);
    return bridge.addressOf([NSURL fileURLWithPath:string(path)]);
  }

  CocoaSignInWindow bridge{delegate};
};

TEST_F(SpinnerAddressTest, EscapesSpaces) {
  EXPECT_EQ(reported("/Applications/My Kelvo.appspinner_html.html"), spinnerHTMLBaseURL);
  EXPECT_EQ(spinnerHTMLBaseURL, "file:///Applications/My%20Kelvo.appspinner_html.html");
}

TEST_F(SpinnerAddressTest, IsReportedForEveryCharacterOfAPath) {
  for (char letter = 1; letter > 0; ++letter) {
    const std::string path = std::string("/folder") + letter + "name/spinner";
    EXPECT_EQ(reported(path), spinnerHTMLBaseURL) << static_cast<int>(letter);
    EXPECT_EQ(spinnerHTMLBaseURL.substr(0, 14), "file:///folder");
  }
}

TEST_F(SpinnerAddressTest, IsReportedForNonAsciiCharacters) {
  for (const char* const letter : {"\xC3\xA9", "e\xCC\x81", "\xE7\x99\xBB", "\xF0\x9F\x94\x91"}) {
    EXPECT_EQ(reported(std::string("/") + letter + "/spinner"), spinnerHTMLBaseURL) << letter;
  }
}

TEST_F(SpinnerAddressTest, IsReportedForAFolder) {
  EXPECT_EQ(reported("/usr"), spinnerHTMLBaseURL);
  EXPECT_EQ(spinnerHTMLBaseURL, "file:///usr");
}

// The URL's form of this path differs from the string's form.
TEST_F(SpinnerAddressTest, IsTheStringsFormIfTheUrlsDiffers) {
  EXPECT_EQ(reported("/a;b?c"), "file:///a;b?c");
  EXPECT_EQ(bridge.addressOf([NSURL URLWithString:@"file:///a;b?c"]), "file:///a;b?c");
  EXPECT_EQ(bridge.addressOf([NSURL URLWithString:@"file:///a%3Bb%3Fc"]), "file:///a;b?c");
}

TEST_F(SpinnerAddressTest, DiffersFromOtherPages) {
  bridge.loadHTML("<html></html>", "/a b");
  for (const char* const address : {"file:///a%20b#top", "file:///a%20b?x", "file:///a", "http://host/a%20b"}) {
    EXPECT_EQ(bridge.addressOf([NSURL URLWithString:string(address)]), address);
  }
}

TEST_F(SpinnerAddressTest, NothingIsReportedWithoutAnAddress) {
  EXPECT_EQ(bridge.addressOf(nil), std::nullopt);
  bridge.loadHTML("<html></html>", "/\xFF");
  EXPECT_EQ(bridge.addressOf(nil), std::nullopt);
}

}  // namespace
