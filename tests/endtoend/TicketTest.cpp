// Signing in by a Kerberos ticket.

#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/endtoend/Certificate.h"
#include "tests/endtoend/KerberosRealm.h"
#include "tests/endtoend/Processes.h"
#include "tests/endtoend/PromptTest.h"
#include "tests/endtoend/SystemRoots.h"

namespace endtoend {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kHost[] = "sso.localhost";
constexpr char kForeignHost[] = "evilsso.localhost";

class TicketTest : public PromptTest {
 protected:
  TicketTest() {
    const auto wrapper = withSystemRoots(organization.file());
    if (wrapper) options.wrapper = *wrapper;
    options.signIn = at(secure, kHost, "/signin");
    options.redirect = at(secure, kHost, "/done");
    protect(secure, "/signin", redirectTo("/done"));
    secure.serve("/done", page("done"));
  }
  ~TicketTest() override { removeSemaphoreSets(); }

  void SetUp() override {
    struct stat root {};
    if (options.wrapper.empty() || stat("/", &root) != 0 || root.st_uid != 0)
      GTEST_SKIP() << "no mount namespace, no root certificates, or a root folder of another user";
  }

  static std::string at(const LoopbackServer& server, const std::string& host, const std::string& target) {
    std::string address = server.address(target);
    return address.replace(address.find("127.0.0.1"), 9, host);
  }

  // Offers Negotiate and Basic, and records the credentials.
  void protect(LoopbackServer& server, const std::string& path, const tools::Response& content) {
    server.serve(path, [this, content](const Request& request) {
      shown.push_back(request.authorization);
      const std::string user = KerberosRealm::userOf(request.authorization);
      if (!user.empty()) users.push_back(user);
      if (!request.authorization.empty()) return content;
      tools::Response refusal = page("refused<script>fetch('/refused')</script>");
      refusal.status = 401;
      refusal.headers["WWW-Authenticate"] = "Negotiate, Basic realm=\"staff\"";
      return refusal;
    });
  }

  void enterPassword() {
    screen.focus(window().id);
    untilPromptTakesInput();
    screen.type("ada");
    screen.press(XK_Tab);
    screen.type("pw");
    screen.press(XK_Return);
  }

  static std::vector<std::string> sessionFolders() {
    std::vector<std::string> found;
    for (const std::string& folder :
         {std::string(g_get_user_runtime_dir()), std::filesystem::temp_directory_path().string()}) {
      for (const auto& each : std::filesystem::directory_iterator(folder)) {
        if (each.path().filename().string().rfind(".svo-session-", 0) == 0) found.push_back(each.path());
      }
    }
    return found;
  }

  std::string signedIn() const { return result(at(secure, kHost, "/done")); }

  const Authority organization{temporary("organization.crt")};
  const Certificate certificate = organization.sign(kHost, temporary("sso.crt"));
  const Certificate foreignCertificate = organization.sign(kForeignHost, temporary("foreign.crt"));
  LoopbackServer secure{certificate.get()};
  LoopbackServer foreign{foreignCertificate.get()};
  KerberosRealm realm{temporary("realm"), {kHost, kForeignHost}, " sso.localhost = EXAMPLE.TEST\n"};
  std::vector<std::string> shown;
  std::vector<std::string> users;
};

TEST_F(TicketTest, ATicketSignsInWithoutAQuestion) {
  realm.signIn();
  EXPECT_EQ(messageOfARun(), signedIn()) << run->standardError();
  EXPECT_THAT(users, ElementsAre("ada@EXAMPLE.TEST"));
  EXPECT_THAT(sessionFolders(), IsEmpty());
}

TEST_F(TicketTest, WithoutATicketThePasswordIsAsked) {
  start();
  enterPassword();
  EXPECT_EQ(message(), signedIn());
  EXPECT_THAT(shown, ElementsAre("", testing::StartsWith("Basic ")));
}

TEST_F(TicketTest, AnUnencryptedServerGetsNoTicket) {
  realm.signIn();
  secure.serve("/signin", redirectTo(at(site, kHost, "/plain")));
  protect(site, "/plain", page("never"));
  start();
  until("the refusal", [this] { return site.wasRequested("GET /refused"); });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(shown, ElementsAre(""));
}

TEST_F(TicketTest, AForeignServerGetsNoTicket) {
  realm.signIn();
  secure.serve("/signin", redirectTo(at(foreign, kForeignHost, "/signin")));
  protect(foreign, "/signin", page("never"));
  start();
  until("the refusal", [this] { return foreign.wasRequested("GET /refused"); });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(shown, ElementsAre(""));
}

TEST_F(TicketTest, AnEmbeddedForeignServerGetsNoTicket) {
  realm.signIn();
  protect(foreign, "/image", page("never"));
  secure.serve("/signin",
               page("<script>const go = () => { location.href = '/done' }</script><img onload=go() onerror=go() src='" +
                    at(foreign, kForeignHost, "/image") + "'>"));
  EXPECT_EQ(messageOfARun(), signedIn());
  EXPECT_THAT(shown, ElementsAre(""));
}

// Its own ticket, which the embedding page cannot read.
TEST_F(TicketTest, AnEmbeddedServerOfTheRealmGetsATicket) {
  realm.signIn();
  options.redirect = at(foreign, kForeignHost, "/done");
  protect(secure, "/image", page("seen"));
  secure.serve("/signin", redirectTo(at(foreign, kForeignHost, "/embedding")));
  foreign.serve("/embedding",
                page("<script>const go = () => { location.href = '/done' }</script><img onerror=go() src='" +
                     at(secure, kHost, "/image") + "'>"));
  foreign.serve("/done", page("done"));
  EXPECT_EQ(messageOfARun(), result(at(foreign, kForeignHost, "/done")));
  EXPECT_THAT(users, ElementsAre("ada@EXAMPLE.TEST"));
}

TEST_F(TicketTest, ATicketThatIsGoneMeansAPassword) {
  realm.signIn();
  options.signIn = at(secure, kHost, "/first");
  secure.serve("/first", redirectTo("/signin"));
  secure.hold("/first");
  start();
  until("the request", [this] { return secure.wasRequested("GET /first"); });
  realm.signOut();
  secure.release("/first");
  enterPassword();
  EXPECT_EQ(message(), signedIn());
  EXPECT_THAT(shown, ElementsAre("", testing::StartsWith("Basic ")));
}

TEST_F(TicketTest, NothingThatAPageStoresIsKept) {
  realm.signIn();
  tools::Response response = page(
      "<script>document.cookie = 'session=secret; max-age=99999'; localStorage.setItem('session', 'secret');"
      "indexedDB.open('session').onsuccess = () => caches.open('session').then((cache) => cache.put('/x', new "
      "Response('secret'))).catch(() => 0).then(() => { location.href = '/done' })</script>");
  response.headers["Strict-Transport-Security"] = "max-age=99999";
  response.headers["Cache-Control"] = "max-age=99999";
  protect(secure, "/signin", response);
  EXPECT_EQ(messageOfARun(), signedIn());
  EXPECT_THAT(users, ElementsAre("ada@EXAMPLE.TEST"));
  EXPECT_THAT(filesInHome(), ElementsAre("Library", "Library/Logs", "Library/Logs/Kelvo.log"));
  EXPECT_THAT(sessionFolders(), IsEmpty());
}

TEST_F(TicketTest, ACrashLeavesNoFolder) {
  realm.signIn();
  secure.hold("/signin");
  start();
  until("the request", [this] { return secure.wasRequested("GET /signin"); });
  EXPECT_THAT(sessionFolders(), SizeIs(1));
  run->signal(SIGSEGV);
  until("the end", [this] { return run->ended(); });
  EXPECT_THAT(sessionFolders(), IsEmpty());
}

TEST_F(TicketTest, TheNextStartRemovesTheFolderOfAKilledRun) {
  adoptOrphans();
  realm.signIn();
  const std::vector<pid_t> before = childrenOfThisProcess();
  secure.hold("/signin");
  start();
  until("the request", [this] { return secure.wasRequested("GET /signin"); });
  run->signal(SIGKILL);
  until("the end", [this] { return run->ended(); });
  // The network process may still write.
  for (const pid_t child : childrenOfThisProcess()) {
    if (std::find(before.begin(), before.end(), child) != before.end()) continue;
    ASSERT_TRUE(waitForExit(child)) << child;
  }
  ASSERT_THAT(sessionFolders(), SizeIs(1));
  realm.signOut();
  options.redirect.reset();
  EXPECT_EQ(messageOfARun(), kOptionsMissing);
  EXPECT_THAT(sessionFolders(), IsEmpty());
}

}  // namespace
}  // namespace endtoend
