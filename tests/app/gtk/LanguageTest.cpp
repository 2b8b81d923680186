#include "app/gtk/Language.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/Shell.h"

namespace {

using support::linesOf;
using support::Outcome;
using support::run;

constexpr char kExtract[] = "'" TRANSLATIONS "/extract' --no-wrap ";

class CatalogueFolderTest : public testing::Test {
 protected:
  CatalogueFolderTest() {
    std::filesystem::create_directories(root / "bin");
    std::filesystem::create_directories(root / "share/locale");
    (void)::chmod((root / "bin").c_str(), 0755);
    setMode(0755);
  }

  void setMode(mode_t mode) const {
    for (const char* const folder : {"share", "share/locale"})
      (void)::chmod((root / folder).c_str(), mode);
  }

  std::string found() const { return catalogueFolder(root / "bin"); }

  support::TemporaryFolder root;
};

TEST_F(CatalogueFolderTest, IsBesideTheFolderOfTheProgram) {
  EXPECT_EQ(found(), root / "share/locale");
}

TEST_F(CatalogueFolderTest, MayBelongToTheGroupOfTheProgram) {
  setMode(0775);
  EXPECT_EQ(found(), root / "share/locale");
}

TEST_F(CatalogueFolderTest, IsNotUsedIfOthersMayWrite) {
  setMode(0757);
  EXPECT_EQ(found(), "");
}

TEST_F(CatalogueFolderTest, IsNotUsedIfItsParentIsWritable) {
  (void)::chmod((root / "share").c_str(), 01777);
  EXPECT_EQ(found(), "");
}

TEST_F(CatalogueFolderTest, IsNotUsedIfItIsALink) {
  std::filesystem::rename(root / "share", root / "elsewhere");
  std::filesystem::create_symlink(root / "elsewhere", root / "share");
  EXPECT_EQ(found(), "");
}

TEST_F(CatalogueFolderTest, IsNotUsedIfAnotherUserOwnsIt) {
  if (::chown((root / "share").c_str(), 12345, static_cast<gid_t>(-1)) != 0) GTEST_SKIP() << "needs root";
  EXPECT_EQ(found(), "");
}

TEST_F(CatalogueFolderTest, IsNotUsedIfAnotherGroupMayWrite) {
  setMode(0775);
  if (::chown((root / "share").c_str(), static_cast<uid_t>(-1), 12345) != 0) GTEST_SKIP() << "needs root";
  (void)::chmod((root / "share").c_str(), 0775);
  EXPECT_EQ(found(), "");
}

TEST(LanguageTest, ValuesReplaceThePlaceholders) {
  EXPECT_EQ(filled("Site: %1, here", {"a.example"}), "Site: a.example, here");
  EXPECT_EQ(filled("%2 after %1", {"one", "two"}), "two after one");
  EXPECT_EQ(filled("%1 %2", {"%2%s%n", "%1"}), "%2%s%n %1");
}

TEST(LanguageTest, OtherPercentSignsAreKept) {
  EXPECT_EQ(filled("%s %n %% %0 %2 %", {"value"}), "%s %n %% %0 %2 %");
}

TEST(LanguageTest, DisplayedValuesAreIsolated) {
  EXPECT_EQ(displayed("%1 says: %2!", {"he", "shalom"}), "\u200E\u2068he\u2069 says: \u2068shalom\u2069!");
}

TEST(LanguageTest, ValuesCannotEndTheirIsolation) {
  EXPECT_EQ(displayed("%1", {"a\u2069\u202Eb\nc\u2029d\u200Ee"}), "\u200E\u2068ab c d\u200Ee\u2069");
}

// A literal that is neither marked nor logged, and is a capitalized word or begins like a sentence or its second part.
TEST(LanguageTest, EveryTextIsMarked) {
  const support::TemporaryFolder folder;
  const Outcome made = run("cd '" + folder.path() + "' && " + kExtract + "--extract-all >all 2>errors && " + kExtract +
                           "--keyword=logInfo:2 --keyword=logWarn:2 --keyword=logError:2 >known && "
                           "msgcomm --no-wrap --unique --output-file=unmarked --force-po all known");
  ASSERT_EQ(made.status, 0) << made.output << support::contentsOf(folder / "errors");
  constexpr char kText[] = R"(^msgid "([A-Z][a-z]+"|[A-Z][A-Za-z]* |%1 | [a-z]+ [a-z]))";
  for (const std::string& line : linesOf(folder / "unmarked")) {
    EXPECT_FALSE(g_regex_match_simple(kText, line.c_str(), G_REGEX_DEFAULT, G_REGEX_MATCH_DEFAULT))
        << "mark it: _(\"...\")\n"
        << line;
  }
}

class TranslationTest : public testing::TestWithParam<std::string> {
 protected:
  // Runs a command in a folder with `texts.pot` and the language's `texts.po`, which has the flags of the template.
  static Outcome runOnTexts(const std::string& command) {
    const support::TemporaryFolder folder;
    return run("cd '" + folder.path() + "' && " + kExtract + ">texts.pot && msgmerge --quiet --no-wrap " +
               "--no-fuzzy-matching --output-file=texts.po '" TRANSLATIONS "/" + GetParam() + ".po' texts.pot && " +
               command);
  }
};

TEST_P(TranslationTest, IsComplete) {
  const Outcome compared = runOnTexts("msgcmp texts.po texts.pot");
  EXPECT_EQ(compared.status, 0) << compared.output << "add the texts: ./dev texts";
}

TEST_P(TranslationTest, HasEveryPlaceholder) {
  const Outcome checked = runOnTexts("msgfmt --check --output-file=/dev/null texts.po");
  EXPECT_EQ(checked.status, 0) << checked.output;
}

TEST_P(TranslationTest, AMissingPlaceholderIsFound) {
  EXPECT_NE(runOnTexts("sed '/^msgstr/s/%1//' texts.po | msgfmt --check --output-file=/dev/null -").status, 0);
}

INSTANTIATE_TEST_SUITE_P(Languages, TranslationTest, testing::ValuesIn(linesOf(TRANSLATIONS "/LINGUAS")),
                         [](const auto& each) { return each.param; });

}  // namespace
