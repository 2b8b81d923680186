// Files of this machine: the launcher may name a file, and a file may link to a file. A site may not.

#include <fstream>
#include <string>

#include "tests/endtoend/PageTest.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::Not;

constexpr unsigned kFileColor = 0xc00040;

class FileAddressTest : public PageTest {
 protected:
  // Creates a file with a page in kFileColor that contains `body` and requests "/read" from the site. Returns its
  // address.
  std::string file(const std::string& name, const std::string& body = "") {
    std::ofstream(temporary(name)) << "<style>html { background: #c00040 }</style><body style='height: 540px'>" << body
                                   << "<img src='" << site.address("/read") << "'>";
    return "file://" + temporary(name).string();
  }

  void expectNothingWasRead() {
    EXPECT_FALSE(picture().find(kFileColor));
    EXPECT_FALSE(site.wasRequested("GET /read"));
  }
};

TEST_F(FileAddressTest, TheLaunchersFileIsShown) {
  options.signIn = file("launchers.html");
  start();
  untilRequested("/read");
  until("the file", [&] { return picture().find(kFileColor).has_value(); });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(FileAddressTest, AFileMayLinkToAFile) {
  const std::string next = file("next.html");
  options.signIn = "file://" + temporary("launchers.html").string();
  std::ofstream(temporary("launchers.html")) << "<script>onload = () => { location.href = '" << next << "' }</script>";
  start();
  untilRequested("/read");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class LinkToFileTest : public FileAddressTest, public testing::WithParamInterface<Named> {};

// The page is still shown afterward and still draws.
TEST_P(LinkToFileTest, FromASiteIsIgnored) {
  std::string html = GetParam().script;
  html.replace(html.find("FILE"), 4, file("secret.html"));
  startOn("<body style='height: 550px'>" + html +
          "<script>addEventListener('click', () => frames(20).then(() => report('still here')))</script>");
  click();
  untilReported("still here");
  expectNothingWasRead();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(logMessages(), Not(Contains(testing::HasSubstr("didFail"))));
}

INSTANTIATE_TEST_SUITE_P(
    By, LinkToFileTest,
    testing::Values(Named{"ALink", "<a href='FILE' style='position: fixed; inset: 0'>read</a>"},
                    Named{"ALinkToANewWindow",
                          "<a href='FILE' target='_blank' style='position: fixed; inset: 0'>read</a>"},
                    Named{"AScript", "<script>onload = () => { location.href = 'FILE' }</script>"},
                    Named{"AScriptAfterAClick", "<script>onclick = () => { location.href = 'FILE' }</script>"},
                    Named{"AScriptThatOpensAWindow", "<script>onclick = () => open('FILE')</script>"},
                    Named{"ARefresh", "<meta http-equiv='refresh' content='0; url=FILE'>"},
                    Named{"AForm",
                          "<form action='FILE'><button style='position: fixed; inset: 0; width: 680px'>read"
                          "</button></form>"},
                    Named{"APostedForm",
                          "<form action='FILE' method='post'><button style='position: fixed; inset: 0; "
                          "width: 680px'>read</button></form>"},
                    Named{"AFrame", "<iframe src='FILE' style='position: fixed; bottom: 0'></iframe>"},
                    Named{"AFrameThatGoesThere",
                          "<iframe style='position: fixed; bottom: 0'></iframe><script>onclick = () => {"
                          "frames[0].location = 'FILE' }</script>"},
                    Named{"AnObject", "<object data='FILE' style='position: fixed; bottom: 0'></object>"},
                    Named{"ARequest", "<script>fetch('FILE').then(() => report('read'), () => 0)</script>"}),
    nameOf);

TEST_F(FileAddressTest, AFirstPagesRedirectEndsTheRun) {
  site.serve("/signin", redirectTo(file("secret.html")));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_FALSE(site.wasRequested("GET /read"));
}

TEST_F(FileAddressTest, ALaterPagesRedirectEndsTheRun) {
  site.serve("/signin", pageThatGoesTo("/next"));
  site.serve("/next", redirectTo(file("secret.html")));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_FALSE(site.wasRequested("GET /read"));
}

TEST_F(FileAddressTest, AFramesRedirectEndsTheRun) {
  site.serve("/signin", page("<iframe src='/next'></iframe>"));
  site.serve("/next", redirectTo(file("secret.html")));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_FALSE(site.wasRequested("GET /read"));
}

TEST_F(FileAddressTest, EnterprisePagesMayNotLinkToFiles) {
  site.serve("/signin", redirectTo(site.address("/start?redirect_uri=" + file("secret.html"))));
  site.serve("/start", pageWith("<script>onload = () => frames(20).then(() => report('still here'))</script>"));
  start();
  untilReported("still here");
  expectNothingWasRead();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
