#include "platform/Failure.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <filesystem>
#include <string>

#include "tests/support/Environment.h"
#include "tests/support/Files.h"

namespace {

// Not every system has German error texts. Messages depend on the locale's name only, so it need not be installed.
TEST(FailureTest, ErrorTextsAreInEnglish) {
  const support::TemporaryFolder locales;
  std::filesystem::create_directory_symlink("/usr/lib/locale/C.utf8", locales / "de_DE.utf8");
  const support::Variable folder("LOCPATH", locales.path());
  const support::Variable language("LANGUAGE", std::nullopt);
  const std::string before = std::setlocale(LC_ALL, nullptr);
  (void)std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(platform::errorWithPath(EACCES, "/x"), "Permission denied: /x");
  (void)std::setlocale(LC_ALL, before.c_str());
}

TEST(FailureTest, UnknownErrorsHaveAText) {
  EXPECT_EQ(platform::errorText(9999), "Unknown error 9999");
}

}  // namespace
