// Modules of tokens, which are third-party code.

#include <signal.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "app/gtk/tokens/Protocol.h"
#include "tests/endtoend/ClientCertificateTest.h"
#include "tests/endtoend/Processes.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::Each;

constexpr char kHelper[] = "svo-signin-toke";

class TokenModuleTest : public ClientCertificateTest {
 protected:
  static bool hasModule(pid_t process) {
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(maps, line);) {
      if (line.find("softhsm") != std::string::npos) return true;
    }
    return false;
  }

  pid_t networkProcess() const { return descendantNamed(run->pid(), "WebKitNetworkPr").value(); }
};

TEST_F(TokenModuleTest, NoModuleIsLoadedBeforeAServerAsks) {
  addToken("Card", "Ada");
  secure.askForCertificates(G_TLS_AUTHENTICATION_NONE);
  secure.hold("/done");
  start();
  until("the request", [&] { return secure.wasRequested("GET /done?code=1"); });
  EXPECT_FALSE(hasModule(run->pid()));
  EXPECT_FALSE(hasModule(networkProcess()));
  secure.release("/done");
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
}

TEST_F(TokenModuleTest, NoModuleIsLoadedIntoTheWindow) {
  addToken("Card", "Ada");
  secure.hold("/done");
  startFocused();
  choose("Ada");
  enterPin(kPin);
  until("the request", [&] { return secure.wasRequested("GET /done?code=1"); });
  EXPECT_FALSE(hasModule(run->pid()));
  EXPECT_TRUE(hasModule(networkProcess()));
  secure.release("/done");
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
}

TEST_F(TokenModuleTest, AHangingModuleDoesNotBlockClosing) {
  adoptOrphans();
  tokens.block();
  start();
  until("the module", [&] { return tokens.hasBlocked(); });
  const std::optional<pid_t> helper = descendantNamed(run->pid(), kHelper);
  ASSERT_TRUE(helper);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_TRUE(waitForExit(*helper));
}

TEST_F(TokenModuleTest, AKilledWindowEndsAHangingModule) {
  adoptOrphans();
  tokens.block();
  start();
  until("the module", [&] { return tokens.hasBlocked(); });
  const std::optional<pid_t> helper = descendantNamed(run->pid(), kHelper);
  ASSERT_TRUE(helper);
  run->signal(SIGKILL);
  EXPECT_TRUE(waitForExit(*helper));
  until("the end", [&] { return run->ended(); });
  removeSemaphoreSets();
}

// An installed window whose program for tokens is replaced.
class OtherTokensTest : public TokenModuleTest {
 protected:
  void SetUp() override {
    TokenModuleTest::SetUp();
    if (IsSkipped()) return;
    (void)organization.signClient("Ada", temporary("Ada.crt"));
    std::filesystem::create_directories(temporary("copy/bin"));
    std::filesystem::create_directories(temporary("copy/libexec"));
    std::filesystem::copy(options.program, temporary("copy/bin"));
    const std::filesystem::path helper = temporary("copy/libexec/svo-signin-tokens");
    std::ofstream(helper) << "#!/bin/sh\ncase $2 in list) cat '" << temporary("list").string()
                          << "' ;; *) cat >/dev/null; exit $(cat '" << temporary("status").string() << "') ;; esac\n";
    std::filesystem::permissions(helper, std::filesystem::perms::owner_all);
    options.program = temporary("copy/bin") / options.program.filename();
    list("[('Ada', 'Example Organization', 'Card', int64 4102444800, '" + escapedCertificate() +
         "', 'pkcs11:token=Card;id=%01;type=private', uint32 1)]");
  }

  void list(const std::string& text) { std::ofstream(temporary("list")) << text; }
  void reply(Opening opening) { std::ofstream(temporary("status")) << static_cast<int>(opening); }

 private:
  std::string escapedCertificate() const {
    std::ifstream file(temporary("Ada.crt"));
    std::string all;
    for (std::string line; std::getline(file, line);)
      all += line + "\\n";
    return all;
  }
};

TEST_F(OtherTokensTest, ALockedPinIsSaid) {
  startFocused();
  reply(Opening::kFinalTry);
  choose("Ada");
  enterPin("1");
  (void)untilReady(ATSPI_ROLE_LABEL, "That PIN was not right. One try is left; after it the PIN is locked.");
  reply(Opening::kLocked);
  enterPin("2");
  (void)untilReady(ATSPI_ROLE_LABEL, "The PIN of \u201CCard\u201D is locked: it was wrong too often.");
  cancelPrompt(ATSPI_ROLE_PUSH_BUTTON, "Ada");
  EXPECT_EQ(message(), result(secure.address("/done?code=1")));
  EXPECT_THAT(owners(), Each(""));
}

TEST_F(OtherTokensTest, TextThatIsNoListOffersNothing) {
  list("[('Ada'");
  EXPECT_EQ(messageOfARun(), result(secure.address("/done?code=1")));
  EXPECT_THAT(logMessages(), Contains(kNoToken));
}

// WebKit's network process loads the module to use the key.
TEST_F(OtherTokensTest, AHangingKeyDoesNotBlockClosing) {
  adoptOrphans();
  reply(Opening::kOpened);
  startFocused();
  choose("Ada");
  (void)untilReady(ATSPI_ROLE_PASSWORD_TEXT, "PIN");
  tokens.block();
  enterPin("1");
  until("the module", [&] { return tokens.hasBlocked(); });
  const pid_t network = networkProcess();
  EXPECT_TRUE(hasModule(network));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_TRUE(waitForExit(network));
}

}  // namespace
}  // namespace endtoend
