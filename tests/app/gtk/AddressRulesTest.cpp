#include "app/gtk/AddressRules.h"

#include <gtest/gtest.h>

#include "app/gtk/Allowance.h"

namespace {

TEST(AddressRulesTest, ASchemeIsReadWithoutRegardToCase) {
  EXPECT_TRUE(hasScheme("FILE:///etc/hostname", "file"));
  EXPECT_TRUE(hasScheme("file:", "file"));
}

TEST(AddressRulesTest, ALongerOrShorterSchemeIsAnother) {
  EXPECT_FALSE(hasScheme("files:/x", "file"));
  EXPECT_FALSE(hasScheme("file", "file"));
  EXPECT_FALSE(hasScheme("fil:/x", "file"));
  EXPECT_FALSE(hasScheme("", "file"));
}

TEST(AddressRulesTest, PagesMailsAndCallsMayOpenOutside) {
  for (const char* address : {"http://host/", "HTTPS://host/", "mailto:help@host", "tel:+49301234"})
    EXPECT_TRUE(mayOpenOutside(address)) << address;
}

TEST(AddressRulesTest, NothingElseMayOpenOutside) {
  for (const char* address : {"file:///etc/passwd", "javascript:alert(1)", "data:text/html,x", "ssh://host", "app:run",
                              "/relative", "httpx://host", " http://host", ""})
    EXPECT_FALSE(mayOpenOutside(address)) << address;
}

TEST(AllowanceTest, IsUsedUp) {
  Allowance allowance(2);
  EXPECT_TRUE(allowance.spend());
  EXPECT_TRUE(allowance.spend());
  EXPECT_FALSE(allowance.spend());
  EXPECT_FALSE(allowance.spend());
}

TEST(AllowanceTest, IsWholeAgainAfterAnAct) {
  Allowance allowance(1);
  EXPECT_TRUE(allowance.spend());
  allowance.renew();
  allowance.renew();
  EXPECT_TRUE(allowance.spend());
  EXPECT_FALSE(allowance.spend());
}

}  // namespace
