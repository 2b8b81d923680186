// The window's input at its start: the six options, the pipe, unknown arguments, and the locale.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>

#include "platform/UniqueFd.h"
#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

using testing::IsEmpty;

class OptionsTest : public EndToEndTest {
 protected:
  OptionsTest() { site.serve("/signin", redirectTo(site.address("/done"))); }

  std::string textOf(const std::filesystem::path& path) const {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static mode_t modeOf(const std::filesystem::path& path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
  }
};

TEST_F(OptionsTest, WithoutASignInAddressTheRunEnds) {
  options.signIn.reset();
  EXPECT_EQ(messageOfARun(), kOptionsMissing);
  EXPECT_THAT(site.requestLines(), IsEmpty());
}

TEST_F(OptionsTest, WithoutARedirectAddressTheRunEnds) {
  options.redirect.reset();
  EXPECT_EQ(messageOfARun(), kOptionsMissing);
  EXPECT_THAT(site.requestLines(), IsEmpty());
}

TEST_F(OptionsTest, WithoutAnEnterpriseAddressTheRunEnds) {
  options.enterprise.reset();
  EXPECT_EQ(messageOfARun(), kOptionsMissing);
  EXPECT_THAT(site.requestLines(), IsEmpty());
}

TEST_F(OptionsTest, AnEmptyAddressIsAMissingOne) {
  options.enterprise = "";
  EXPECT_EQ(messageOfARun(), kOptionsMissing);
}

TEST_F(OptionsTest, WithoutOptionsThereIsNoMessage) {
  Options none;
  none.program = options.program;
  none.environment = options.environment;
  options = none;
  EXPECT_EQ(messageOfARun(), "");
}

TEST_F(OptionsTest, WithoutAPipeTheSignInStillEnds) {
  options.pipe.reset();
  EXPECT_EQ(messageOfARun(), "");
  EXPECT_TRUE(site.wasRequested("GET /done"));
}

TEST_F(OptionsTest, AMissingPipeIsNotCreated) {
  options.pipe = temporary("nowhere");
  EXPECT_EQ(messageOfARun(), "");
  EXPECT_FALSE(std::filesystem::exists(temporary("nowhere")));
}

TEST_F(OptionsTest, TheMessageOverwritesARegularFilesStart) {
  const std::string sent = result(site.address("/done"));
  const std::string before(100, '.');
  options.pipe = temporary("file");
  std::ofstream(*options.pipe) << before;
  std::filesystem::permissions(*options.pipe, std::filesystem::perms::owner_all);
  EXPECT_EQ(messageOfARun(), "");
  EXPECT_EQ(textOf(*options.pipe), sent + before.substr(sent.size()));
  EXPECT_EQ(modeOf(*options.pipe), 0644u);
}

TEST_F(OptionsTest, AnUnreadablePipeIsMadeReadable) {
  std::filesystem::permissions(pipe.path(), std::filesystem::perms::none);
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
  EXPECT_EQ(modeOf(pipe.path()), 0644u);
}

TEST_F(OptionsTest, AFolderAsPipeEndsTheSignIn) {
  std::filesystem::create_directory(temporary("folder"));
  options.pipe = temporary("folder");
  EXPECT_EQ(messageOfARun(), "");
}

// A terminal is a device that every user may create.
TEST_F(OptionsTest, ADeviceAsPipeIsNotTouched) {
  const platform::UniqueFd terminal(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  ASSERT_EQ(grantpt(terminal.get()), 0);
  ASSERT_EQ(unlockpt(terminal.get()), 0);
  options.pipe = ptsname(terminal.get());
  std::filesystem::permissions(*options.pipe, std::filesystem::perms::owner_all);
  EXPECT_EQ(messageOfARun(), "");
  EXPECT_TRUE(site.wasRequested("GET /done"));
  EXPECT_EQ(modeOf(*options.pipe), 0700u);
  char byte = 0;
  EXPECT_EQ(read(terminal.get(), &byte, 1), -1);
}

TEST_F(OptionsTest, ToolkitArgumentsAreIgnored) {
  options.before = {"--display=:999",    "--gtk-debug=all", "--class=other", "--name=other", "--g-fatal-warnings",
                    "--gtk-module=none", "--help",          "--version",     "--",           "stray"};
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
}

TEST_F(OptionsTest, AValueInTheNextArgumentIsIgnored) {
  options.signIn.reset();
  options.before = {"--zelURL", site.address("/signin")};
  EXPECT_EQ(messageOfARun(), kOptionsMissing);
}

TEST_F(OptionsTest, TheFirstOfTwoEqualOptionsIsUsed) {
  options.before = {"--zelURL=" + site.address("/first")};
  site.serve("/first", redirectTo(site.address("/done?code=first")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=first")));
}

struct Locale {
  const char* lang;
  const char* language;  // the variable LANGUAGE
  const char* expected;
};

void PrintTo(const Locale& locale, std::ostream* out) {
  *out << locale.lang << " " << locale.language;
}

class LocaleTest : public OptionsTest, public testing::WithParamInterface<Locale> {};

// `Intl` throws for an unknown language. WebKit reports only the first language to a page.
TEST_P(LocaleTest, PagesSeeLanguagesThatExist) {
  options.environment["LC_ALL"] = options.environment["LC_MESSAGES"] = "";
  options.environment["LANG"] = GetParam().lang;
  options.environment["LANGUAGE"] = GetParam().language;
  site.serve("/signin", pageThatGoesTo("/done?' + navigator.language + ',' + navigator.languages + ',' + "
                                       "new Intl.NumberFormat(navigator.languages).resolvedOptions().locale + '"));
  EXPECT_EQ(messageOfARun(), result(site.address(std::string("/done?") + GetParam().expected)));
}

INSTANTIATE_TEST_SUITE_P(Locales, LocaleTest,
                         testing::Values(Locale{"C", "", "en-US,en-US,en-US"}, Locale{"POSIX", "", "en-US,en-US,en-US"},
                                         Locale{"C.UTF-8", "", "en-US,en-US,en-US"},
                                         Locale{"de_DE.UTF-8", "", "de-DE,de-DE,de-DE"},
                                         Locale{"C.UTF-8", "pt_BR:ca@valencia", "pt-BR,pt-BR,pt-BR"},
                                         Locale{"not a locale.UTF-8", "", "en-US,en-US,en-US"},
                                         Locale{"C.UTF-8", ":_DE", "en-US,en-US,en-US"}));

TEST_F(OptionsTest, AMissingDisplayIsReportedOnStandardError) {
  options.environment.clear();
  start();
  EXPECT_EQ(run->exitStatus(), 1);
  EXPECT_EQ(pipe.text(), kOptionsMissing);
  const std::string errors = run->standardError();
  EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
  EXPECT_THAT(errors, testing::HasSubstr("display"));
}

}  // namespace
}  // namespace endtoend
