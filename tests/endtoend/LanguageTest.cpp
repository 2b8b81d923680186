// The texts of the window in the user's language.

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/endtoend/Accessibility.h"
#include "tests/endtoend/PromptTest.h"
#include "tests/endtoend/Proxy.h"
#include "tests/support/Shell.h"
#include "tests/tools/support/ClosedPort.h"

namespace endtoend {
namespace {

namespace fs = std::filesystem;

using testing::IsEmpty;
using testing::Not;

constexpr char kEmptyLocale[] = "/usr/lib/locale/C.utf8";

class LanguageTest : public PromptTest {
 protected:
  void SetUp() override {
    if (!Accessibility::isPossible()) GTEST_SKIP() << "no D-Bus or no accessibility service here";
    if (!fs::exists(kEmptyLocale)) GTEST_SKIP() << "no " << kEmptyLocale;
    accessibility = std::make_unique<Accessibility>(temporary("bus"));
    options.environment.merge(accessibility->environment());
  }

  // A locale need not be installed: the messages of a locale depend on its name only.
  //   "de_DE"
  void useLocale(const std::string& name) {
    fs::create_directories(temporary("locales"));
    fs::create_directory_symlink(kEmptyLocale, temporary("locales/" + name + ".utf8"));
    options.environment["LOCPATH"] = temporary("locales");
    options.environment["LC_ALL"] = name + ".UTF-8";
    options.environment["LANGUAGE"] = "";
  }

  // A copy of the program with a German catalogue that puts each text in brackets, or edits it otherwise.
  void putTextsInBrackets(const std::string& edit = "s/.*/[&]/") {
    const fs::path catalogue = temporary("copy/share/locale/de/LC_MESSAGES/svo-signin.mo");
    fs::create_directories(temporary("copy/bin"));
    fs::create_directories(catalogue.parent_path());
    fs::copy(options.program, temporary("copy/bin"));
    options.program = temporary("copy/bin/svo-signin");
    const support::Outcome made =
        support::run("'" TRANSLATIONS "/extract' | msgen --lang=de - | msgfilter --keep-header sed '" + edit + "' 2>'" +
                     temporary("filtered").string() + "' | msgfmt --output-file='" + catalogue.string() + "' -");
    ASSERT_TRUE(fs::exists(catalogue)) << made.output;
    useLocale("de_DE");
  }

  // The names of the window's widgets without the page, and without marks that are not displayed.
  std::vector<std::string> texts() const {
    std::vector<std::string> found;
    for (const AccessibleObject& each : accessibility->allOf(run->pid())) {
      if (!each.name.empty()) found.push_back(withoutMarks(each.name));
    }
    return found;
  }

  bool shows(const std::string& text) const {
    const std::vector<std::string> all = texts();
    return std::find(all.begin(), all.end(), text) != all.end();
  }

  // Whether the button takes input.
  bool takesInput(const std::string& button) const {
    const std::vector<AccessibleObject> all = accessibility->allOf(run->pid());
    return std::any_of(all.begin(), all.end(), [&](const AccessibleObject& each) {
      return each.role == ATSPI_ROLE_PUSH_BUTTON && each.name == button && accessibility->isSensitive(each);
    });
  }

  void untilShows(const std::string& text) {
    until("the text " + text, [&] { return shows(text); });
  }

  // Expects each text to be in brackets, except those of the launcher and the page.
  void expectBrackets(const std::vector<std::string>& foreign) const {
    const std::vector<std::string> all = texts();
    EXPECT_THAT(all, Not(IsEmpty()));
    for (const std::string& text : all) {
      const bool isForeign = std::find(foreign.begin(), foreign.end(), text) != foreign.end();
      EXPECT_TRUE(isForeign || (text.front() == '[' && text.back() == ']')) << "not from the catalogue: " << text;
    }
  }

  void expectHostOnTheRight() {
    const auto isEmpty = [this](int from) {
      const Picture all = picture();
      for (int y = 0; y < kStripHeight - 3; ++y) {
        for (int x = from; x < from + all.width() / 2; ++x)
          if (all.colorAt(x, y) != all.colorAt(from, 0)) return false;
      }
      return true;
    };
    until("the host", [&] { return !isEmpty(window().frame.width / 2); });
    EXPECT_TRUE(isEmpty(0));
  }

  std::unique_ptr<Accessibility> accessibility;
};

TEST_F(LanguageTest, EveryTextOfADialogIsMarked) {
  putTextsInBrackets();
  startOn("<script>onload = async () => { await frames(3); prompt('Really?', 'yes') }</script>");
  untilShows("[127.0.0.1 says:]");
  EXPECT_TRUE(shows("[Site: 127.0.0.1, this computer]"));
  EXPECT_TRUE(shows("[Cancel]"));
  expectBrackets({"Example Product", "127.0.0.1", "Really?", "yes"});
}

TEST_F(LanguageTest, EveryTextOfAPasswordPromptIsMarked) {
  const Proxy proxy(site);
  options.environment.merge(proxy.environment());
  site.serve("/signin", [](const Request&) {
    tools::Response refusal = page("refused");
    refusal.status = 401;
    refusal.headers["WWW-Authenticate"] = "Basic realm=\"staff\"";
    return refusal;
  });
  options.signIn = "http://shop.example/signin";
  putTextsInBrackets();
  start();
  screen.focus(window().id);
  until("the prompt's buttons", [&] { return takesInput("[OK]"); });
  screen.type("ada");
  screen.press(XK_Return);
  untilShows(
      "[That name or password was not right.] [The connection is not encrypted: others can read what you type.]");
  EXPECT_TRUE(shows("[It says: \u201Cstaff\u201D]"));
  expectBrackets({"Example Product", "shop.example", "ada"});
}

TEST_F(LanguageTest, EveryTextOfAKeyPromptIsMarked) {
  const fs::path keys = options.program.parent_path() / "svo-signin-keys";
  putTextsInBrackets();
  fs::copy(keys, temporary("copy/bin"));
  options.signIn = "http://localhost" + site.address("/signin").substr(site.address().rfind(':'));
  startOn(
      "<script>onclick = () => navigator.credentials.get({ publicKey: { challenge: new Uint8Array(32) } })</script>");
  untilPainted();
  clickAt(300, 300);
  untilShows("[localhost asks for your security key]");
  EXPECT_TRUE(shows("[Sign in to localhost with a security key.]\n[Insert your security key.]"));
  expectBrackets({"Example Product", "localhost"});
}

TEST_F(LanguageTest, TheFirstTitleIsMarked) {
  putTextsInBrackets();
  options.product.reset();
  start();
  untilShows("[Sign In]");
}

TEST_F(LanguageTest, TextsAreInTheLanguageOfTheUser) {
  useLocale("de_AT");
  startOn("<script>onload = async () => { await frames(3); confirm('Wirklich?') }</script>");
  untilShows("127.0.0.1 meldet:");
  EXPECT_TRUE(shows("Website: 127.0.0.1, dieser Computer"));
  EXPECT_TRUE(shows("Abbrechen"));
}

TEST_F(LanguageTest, TheVariableLanguageIsRespected) {
  useLocale("en_US");
  options.environment["LANGUAGE"] = "xx:pt_BR";
  start();
  untilShows("Site: 127.0.0.1, este computador");
}

TEST_F(LanguageTest, ALanguageWithoutCatalogueIsEnglish) {
  useLocale("is_IS");
  start();
  untilShows("Site: 127.0.0.1, this computer");
}

TEST_F(LanguageTest, ABrokenCatalogueIsHarmless) {
  putTextsInBrackets();
  fs::resize_file(temporary("copy/share/locale/de/LC_MESSAGES/svo-signin.mo"), 700);
  start();
  untilShows("Site: 127.0.0.1, this computer");
}

TEST_F(LanguageTest, ACatalogueOfOthersIsNotUsed) {
  putTextsInBrackets();
  fs::permissions(temporary("copy/share"), fs::perms::all);
  start();
  untilShows("Site: 127.0.0.1, this computer");
}

TEST_F(LanguageTest, ArabicStartsOnTheRight) {
  useLocale("ar_EG");
  start();
  untilShows("الموقع: 127.0.0.1، هذا الحاسوب");
  expectHostOnTheRight();
}

TEST_F(LanguageTest, TheCatalogueDecidesTheDirection) {
  putTextsInBrackets("s/.*/[&]/;s/.default:LTR./default:RTL/");
  start();
  untilShows("[Site: 127.0.0.1, this computer]");
  expectHostOnTheRight();
}

TEST_F(LanguageTest, LogAndErrorsAreInEnglish) {
  const tools::ClosedPort closed;
  options.signIn = closed.address();
  replaceBwrap("exit 1");
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  const std::string errors = run->standardError();
  const std::vector<std::string> log = logMessages();
  fs::remove(logFile());

  useLocale("de_DE");
  EXPECT_EQ(messageOfARun(), kLoadFailed + kLoadFailed);  // the pipe's text so far
  EXPECT_EQ(run->standardError(), errors);
  EXPECT_EQ(logMessages(), log);
  EXPECT_THAT(log, Not(IsEmpty()));
}

}  // namespace
}  // namespace endtoend
