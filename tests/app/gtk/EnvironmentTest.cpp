#include "app/gtk/Environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/Environment.h"

namespace {

TEST(Environment, LosesEveryDebuggingVariable) {
  for (const char* const name : kDebuggingVariables) {
    const support::Variable variable(name, "1");
    prepareEnvironment();
    EXPECT_EQ(std::getenv(name), nullptr) << name;
  }
}

TEST(Environment, LosesTheOptionsOfTheEngine) {
  const support::Variable first("JSC_dumpOptions", "1");
  const support::Variable second("JSC_dumpGeneratedBytecodes", "1");
  prepareEnvironment();
  EXPECT_EQ(std::getenv("JSC_dumpOptions"), nullptr);
  EXPECT_EQ(std::getenv("JSC_dumpGeneratedBytecodes"), nullptr);
}

TEST(Environment, KeepsOtherVariables) {
  const support::Variable proxy("https_proxy", "http://proxy.example:3128");
  const support::Variable tickets("SOUP_GSSAPI_TRUSTED_URIS", "https://");
  prepareEnvironment();
  EXPECT_STREQ(std::getenv("https_proxy"), "http://proxy.example:3128");
  EXPECT_STREQ(std::getenv("SOUP_GSSAPI_TRUSTED_URIS"), "https://");
}

}  // namespace
