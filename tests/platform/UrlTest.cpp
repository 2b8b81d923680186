#include <gtest/gtest.h>

#include "platform/Url.h"

namespace {

using platform::isUrl;

TEST(UrlTest, AcceptsEveryForm) {
  for (const char* url : {"http://example.com", "https://u:p@h:80/a%20b/;x=1?q=/?&#f?/", "mailto:a@b.c",
                          "file:///tmp/a", "x-y.z+1:", "http://[::1]:8080/", "http://h#", "http://", "urn:a:b"}) {
    EXPECT_TRUE(isUrl(url)) << url;
  }
}

TEST(UrlTest, RejectsAMissingScheme) {
  for (const char* text :
       {"", "example.com", "/path", "//h/a", ":", "://h", "1http://h", "ht tp://h", "h_p://h", "\xc3\xa4:"})
    EXPECT_FALSE(isUrl(text)) << text;
}

TEST(UrlTest, RejectsCharactersThatNeedAnEscape) {
  for (const char* text : {"http://h/a b", " http://h", "http://h/\n", "http://h/\xc3\xa4", "http://h/<", "http://h/\"",
                           "http://h/\\", "http://h/^`{|}", "http://h h/", "http://h?a b", "http://h#a b"})
    EXPECT_FALSE(isUrl(text)) << text;
}

TEST(UrlTest, RejectsAMalformedEscape) {
  for (const char* text : {"http://h/%", "http://h/%4", "http://h/%zz", "http://h/%4g", "http://h?%", "mailto:%2"})
    EXPECT_FALSE(isUrl(text)) << text;
  EXPECT_TRUE(isUrl("http://h/%4A?%fF#%00"));
}

TEST(UrlTest, AcceptsBracketsOnlyAroundAHost) {
  for (const char* text :
       {"http://h/[a]", "http://[::1", "http://[::1]a/", "http://[::1]:a/", "http://h?[", "http://[/]"})
    EXPECT_FALSE(isUrl(text)) << text;
  EXPECT_TRUE(isUrl("http://u@[fe80::1%25eth0]/"));
}

TEST(UrlTest, AcceptsAtMostOneFragment) {
  EXPECT_TRUE(isUrl("http://h/#a"));
  EXPECT_FALSE(isUrl("http://h/#a#b"));
}

TEST(UrlTest, RejectsNul) {
  EXPECT_FALSE(isUrl(std::string_view("http://h/\0", 10)));
}

}  // namespace
