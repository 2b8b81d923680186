// The files of the component `signin`, which is the program's package.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "app/CommandLine.h"
#include "tests/packaging/StagedTest.h"
#include "tests/support/Files.h"

namespace {

using support::contentsOf;
using support::Outcome;
using support::run;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAreArray;

std::string decompressed(const std::string& path) {
  return run("gzip -dc '" + path + "'").output;
}

// Returns the size of a PNG image (W3C PNG, section 11.2.2): bytes 16 to 19 are its width and 20 to 23 its height, both
// big-endian.
std::pair<int, int> sizeOfImage(const std::string& path) {
  const std::string bytes = contentsOf(path);
  const auto number = [&bytes](std::size_t at) {
    int value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
      value = value * 256 + static_cast<unsigned char>(bytes.at(i));
    return value;
  };
  return {number(16), number(20)};
}

std::vector<std::string> languages() {
  return support::linesOf(LANGUAGES);
}

class StagedInstallTest : public packaging_test::StagedTest {
 protected:
  explicit StagedInstallTest(const std::string& prefix = "/usr") { install("signin", prefix); }
};

class OtherPrefixTest : public StagedInstallTest {
 protected:
  OtherPrefixTest() : StagedInstallTest("/opt/sign in") {}
};

TEST_F(StagedInstallTest, ContainsExactlyTheFilesOfThePackage) {
  std::vector<std::string> files = {"/usr/bin/svo-signin",
                                    "/usr/bin/svo-signin-ask",
                                    "/usr/libexec/svo-signin-keys",
                                    "/usr/libexec/svo-signin-tokens",
                                    "/usr/share/applications/svo-signin.desktop",
                                    "/usr/share/doc/svo-signin/changelog.gz",
                                    "/usr/share/doc/svo-signin/copyright",
                                    "/usr/share/doc/svo-signin/troubleshooting.md",
                                    "/usr/share/icons/hicolor/128x128/apps/svo-signin.png",
                                    "/usr/share/icons/hicolor/16x16/apps/svo-signin.png",
                                    "/usr/share/icons/hicolor/24x24/apps/svo-signin.png",
                                    "/usr/share/icons/hicolor/256x256/apps/svo-signin.png",
                                    "/usr/share/icons/hicolor/32x32/apps/svo-signin.png",
                                    "/usr/share/icons/hicolor/48x48/apps/svo-signin.png",
                                    "/usr/share/icons/hicolor/64x64/apps/svo-signin.png",
                                    "/usr/share/icons/hicolor/scalable/apps/svo-signin.svg",
                                    "/usr/share/lintian/overrides/svo-signin",
                                    "/usr/share/man/man1/svo-signin-ask.1.gz",
                                    "/usr/share/man/man1/svo-signin.1.gz"};
  for (const std::string& language : languages())
    files.push_back("/usr/share/locale/" + language + "/LC_MESSAGES/svo-signin.mo");
  EXPECT_THAT(stagedFiles(), UnorderedElementsAreArray(files));
}

TEST_F(OtherPrefixTest, InstallsEveryFileThere) {
  const std::vector<std::string> files = stagedFiles();
  EXPECT_EQ(files.size(), 19u + languages().size());
  EXPECT_THAT(files, testing::Each(StartsWith("/opt/sign in/")));
}

TEST_F(StagedInstallTest, OnlyTheProgramsAreExecutable) {
  for (const std::string& file : stagedFiles()) {
    const bool isProgram = file.rfind("/usr/bin/", 0) == 0 || file.rfind("/usr/libexec/", 0) == 0;
    EXPECT_EQ(support::modeOf(staged(file)), isProgram ? 0755u : 0644u) << file;
  }
}

TEST_F(StagedInstallTest, ContainsAnIconOfEverySize) {
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    const std::string side = std::to_string(size);
    EXPECT_EQ(sizeOfImage(staged("/usr/share/icons/hicolor/" + side + "x" + side + "/apps/svo-signin.png")),
              std::pair(size, size));
  }
}

TEST_F(StagedInstallTest, DesktopFileIsValid) {
  const Outcome check = run("desktop-file-validate '" + staged("/usr/share/applications/svo-signin.desktop") + "'");
  EXPECT_EQ(check.status, 0);
  EXPECT_EQ(check.output, "");
}

TEST_F(StagedInstallTest, ManualsHaveNoWarnings) {
  for (const std::string& manual : support::namesIn(staged("/usr/share/man/man1"))) {
    const Outcome check = run("mandoc -Tlint -Wwarning '" + staged("/usr/share/man/man1/" + manual) + "'");
    EXPECT_EQ(check.status, 0);
    EXPECT_EQ(check.output, "");
  }
}

TEST_F(StagedInstallTest, DesktopFileHasEveryLanguage) {
  const std::string file = contentsOf(staged("/usr/share/applications/svo-signin.desktop"));
  for (const std::string& language : languages()) {
    EXPECT_THAT(file, HasSubstr("\nName[" + language + "]="));
    EXPECT_THAT(file, HasSubstr("\nComment[" + language + "]="));
  }
}

TEST_F(StagedInstallTest, ManualsNameEveryOption) {
  const std::string manual = decompressed(staged("/usr/share/man/man1/svo-signin.1.gz"));
  const std::string manualOfAsk = decompressed(staged("/usr/share/man/man1/svo-signin-ask.1.gz"));
  for (const char* const option :
       {CommandLine::zel_url_param, CommandLine::redirect_url_param, CommandLine::redirect_type3_url_param,
        CommandLine::pipe_name_param, CommandLine::app_name_param, CommandLine::type3_window_title_param}) {
    const std::string item = std::string("\n.It Fl ") + (option + 1) + " Ns = Ns Ar ";
    EXPECT_THAT(manual, HasSubstr(item));
    if (option == CommandLine::pipe_name_param) continue;
    EXPECT_THAT(manualOfAsk, HasSubstr(item));
  }
}

TEST_F(StagedInstallTest, ChangelogBeginsWithThisVersion) {
  EXPECT_THAT(decompressed(staged("/usr/share/doc/svo-signin/changelog.gz")), StartsWith("svo-signin (" VERSION ") "));
}

}  // namespace
