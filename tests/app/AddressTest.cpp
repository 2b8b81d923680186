#include "app/Address.h"

#include <gtest/gtest.h>

namespace {

TEST(AddressTest, SchemesAreCaseInsensitive) {
  EXPECT_TRUE(hasScheme("FILE:///etc/hostname", "file"));
  EXPECT_TRUE(hasScheme("file:", "file"));
  EXPECT_TRUE(isWebAddress("HTTPS://host/"));
  EXPECT_TRUE(isContactAddress("MailTo:help@host"));
}

TEST(AddressTest, ComparesTheWholeScheme) {
  EXPECT_FALSE(hasScheme("files:/x", "file"));
  EXPECT_FALSE(hasScheme("file", "file"));
  EXPECT_FALSE(hasScheme("fil:/x", "file"));
  EXPECT_FALSE(hasScheme("", "file"));
}

TEST(AddressTest, WebAndContactAddressesMayOpenOutside) {
  for (const char* address : {"http://host/", "HTTPS://host/", "mailto:help@host", "tel:+49301234"})
    EXPECT_TRUE(mayOpenOutside(address)) << address;
}

TEST(AddressTest, OtherAddressesMayNotOpenOutside) {
  for (const char* address : {"file:///etc/passwd", "javascript:alert(1)", "data:text/html,x", "ssh://host", "app:run",
                              "/relative", "httpx://host", " http://host", ""})
    EXPECT_FALSE(mayOpenOutside(address)) << address;
}

}  // namespace
