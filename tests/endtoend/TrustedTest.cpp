// Sites with certificates of a private authority, reached through the system's proxy.

#include <filesystem>

#include "tests/endtoend/Certificate.h"
#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Proxy.h"
#include "tests/endtoend/SystemRoots.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class TrustedTest : public EndToEndTest {
 protected:
  TrustedTest() {
    proxy.tunnelTo(secure);
    options.environment.merge(proxy.environment());
    options.signIn = "https://signin.example/signin";
    options.redirect = "https://signin.example/done";
    secure.serve("/signin", redirectTo("https://signin.example/done?code=1"));
  }

  // Starts the program with the authority as system root. Returns false if this machine does not support that.
  bool trustTheOrganization() {
    const auto wrapper = withSystemRoots(organization.file());
    if (wrapper) options.wrapper = *wrapper;
    return wrapper.has_value();
  }

  void expectRefusal(int code) {
    EXPECT_EQ(messageOfARun(), kLoadFailed);
    EXPECT_THAT(logMessages(), Contains("didFailProvisionalLoadWithError for URL " + *options.signIn));
    EXPECT_THAT(logMessages(), Contains("didFailProvisionalLoadWithError Error code " + std::to_string(code)));
    EXPECT_THAT(secure.requests(), IsEmpty());
  }

  const Authority organization{temporary("organization.crt")};
  const Certificate certificate = organization.sign("signin.example", temporary("signin.crt"));
  LoopbackServer secure{certificate.get()};
  Proxy proxy{site};
};

TEST_F(TrustedTest, ATrustedSiteLoads) {
  if (!trustTheOrganization()) GTEST_SKIP() << "no mount namespace or no root certificates";
  EXPECT_EQ(messageOfARun(), result("https://signin.example/done?code=1"));
  EXPECT_THAT(secure.requestLines(), ElementsAre("GET /signin", "GET /done?code=1"));
  EXPECT_THAT(proxy.requestLines(), testing::Each("CONNECT signin.example:443"));
}

TEST_F(TrustedTest, NoTlsKeyIsWrittenToDisk) {
  if (!trustTheOrganization()) GTEST_SKIP() << "no mount namespace or no root certificates";
  options.environment["SSLKEYLOGFILE"] = temporary("keys");
  EXPECT_EQ(messageOfARun(), result("https://signin.example/done?code=1"));
  EXPECT_FALSE(std::filesystem::exists(temporary("keys")));
}

TEST_F(TrustedTest, AnUntrustedSiteDoesNotLoad) {
  expectRefusal(-1203);
}

TEST_F(TrustedTest, TheEnvironmentCannotMakeTheSystemTrustIt) {
  options.environment["SSL_CERT_FILE"] = organization.file();
  expectRefusal(-1203);
}

TEST_F(TrustedTest, AnotherHostsCertificateIsRejected) {
  if (!trustTheOrganization()) GTEST_SKIP() << "no mount namespace or no root certificates";
  options.signIn = "https://other.example/signin";
  expectRefusal(-1202);
}

}  // namespace
}  // namespace endtoend
