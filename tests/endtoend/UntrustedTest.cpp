// A site whose certificate nobody has signed: no page of it is shown, and there is no way around that.
//
// A program of its own, since the leak checker of GCC 12 crashes over the thread-local storage of the TLS library that
// this process loads.

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
    // Now and then WebKit calls the load cancelled before it tells why.
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
  expectRefusal(secure.address("/done?code=1"));
}

TEST_F(UntrustedTest, AnUntrustedSubFrameEndsTheRun) {
  site.serve("/signin", page("<iframe src='" + secure.address("/advert") + "'></iframe>"));
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  expectRefusal(secure.address("/advert"));
}

}  // namespace
}  // namespace endtoend
