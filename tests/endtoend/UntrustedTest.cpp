// A site with a self-signed certificate is not shown, without exception.
//
// A separate program: the leak checker of GCC 12 crashes on the thread-local storage of the TLS library in this
// process.

#include "tests/endtoend/Certificate.h"

#include <string>

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

using testing::Contains;

class UntrustedTest : public EndToEndTest {
 protected:
  void expectRefusal(const std::string& address) {
    EXPECT_THAT(logMessages(), Contains("didFailProvisionalLoadWithError for URL " + address));
    // WebKit sometimes reports the load as cancelled before it reports the certificate error.
    EXPECT_THAT(logMessages(), Contains(testing::AnyOf("didFailProvisionalLoadWithError Error code -1203",
                                                       "didFailProvisionalLoadWithError Error code -1")));
  }

  const Certificate selfSigned{temporary("certificate.pem")};
  LoopbackServer secure{selfSigned.get()};
};

TEST_F(UntrustedTest, AnUntrustedCertificateEndsTheRun) {
  secure.serve("/signin", page("signin"));
  options.signIn = secure.address("/signin");
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectRefusal(secure.address("/signin"));
  EXPECT_THAT(secure.requests(), testing::IsEmpty());
}

TEST_F(UntrustedTest, AnUntrustedRedirectAddressIsNoResult) {
  options.redirect = secure.address("/done");
  site.serve("/signin", redirectTo(secure.address("/done?code=1")));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectRefusal(secure.address("/done?…"));
}

TEST_F(UntrustedTest, AnUntrustedSubFrameEndsTheRun) {
  site.serve("/signin", page("<iframe src='" + secure.address("/advert") + "'></iframe>"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectRefusal(secure.address("/advert"));
}

}  // namespace
}  // namespace endtoend
