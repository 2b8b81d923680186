#include "app/gtk/load/CocoaErrors.h"

#include <gtest/gtest.h>

namespace {

struct Case {
  const char* name;
  LoadError error;
  const char* address;
  int code;
};

class CocoaErrorsTest : public testing::TestWithParam<Case> {};

TEST_P(CocoaErrorsTest, EachErrorHasItsCode) {
  EXPECT_EQ(cocoaErrorCode(GetParam().error, GetParam().address), GetParam().code);
}

constexpr char kPage[] = "http://host/";

INSTANTIATE_TEST_SUITE_P(
    , CocoaErrorsTest,
    testing::Values(Case{"UnknownProtocol", {"WebKitNetworkError", 301}, kPage, -1002},
                    Case{"Cancelled", {"WebKitNetworkError", 302}, kPage, -999},
                    Case{"MissingLocalFile", {"WebKitNetworkError", 303}, kPage, -1100},
                    Case{"AnotherNetworkError", {"WebKitNetworkError", 399}, kPage, -1},
                    Case{"AddressThatCannotBeShown", {"WebKitPolicyError", 101}, kPage, 101},
                    Case{"InterruptedByPolicy", {"WebKitPolicyError", 102}, kPage, 102},
                    Case{"RestrictedPort", {"WebKitPolicyError", 103}, kPage, 103},
                    Case{"FileNotFound", {"g-io-error-quark", 1}, kPage, -1100},
                    Case{"PermissionDenied", {"g-io-error-quark", 14}, kPage, -1102},
                    Case{"TimedOut", {"g-io-error-quark", 24}, kPage, -1001},
                    Case{"PartialInput", {"g-io-error-quark", 34}, kPage, -1005},
                    Case{"HostUnreachable", {"g-io-error-quark", 37}, kPage, -1004},
                    Case{"NetworkUnreachable", {"g-io-error-quark", 38}, kPage, -1009},
                    Case{"ConnectionRefused", {"g-io-error-quark", 39}, kPage, -1004},
                    Case{"ProxyFailed", {"g-io-error-quark", 40}, kPage, -1004},
                    Case{"ProxyAuthenticationFailed", {"g-io-error-quark", 41}, kPage, -1004},
                    Case{"ProxyNeedsAuthentication", {"g-io-error-quark", 42}, kPage, -1004},
                    Case{"ProxyNotAllowed", {"g-io-error-quark", 43}, kPage, -1004},
                    Case{"ConnectionClosed", {"g-io-error-quark", 44}, kPage, -1005},
                    Case{"AnotherInputOutputError", {"g-io-error-quark", 0}, kPage, -1},
                    Case{"HostNotFound", {"g-resolver-error-quark", 0}, kPage, -1003},
                    Case{"ResolverFailedForNow", {"g-resolver-error-quark", 1}, kPage, -1003},
                    Case{"AnswerThatCannotBeParsed", {"soup-session-error-quark", 0}, kPage, -1017},
                    Case{"AnswerThatCannotBeDecoded", {"soup-session-error-quark", 1}, kPage, -1017},
                    Case{"RedirectsTooMany", {"soup-session-error-quark", 2}, kPage, -1007},
                    Case{"RestartsTooMany", {"soup-session-error-quark", 3}, kPage, -1007},
                    Case{"RedirectWithoutAddress", {"soup-session-error-quark", 4}, kPage, -1010},
                    Case{"RedirectToNoAddress", {"soup-session-error-quark", 5}, kPage, -1010},
                    Case{"TlsHandshake", {"g-tls-error-quark", 1}, kPage, -1200},
                    Case{"UnknownAuthority", {"tls-certificate", 1}, kPage, -1203},
                    Case{"AnotherHostsCertificate", {"tls-certificate", 2}, kPage, -1202},
                    Case{"CertificateNotValidYet", {"tls-certificate", 4}, kPage, -1204},
                    Case{"ExpiredCertificate", {"tls-certificate", 8}, kPage, -1201},
                    Case{"RevokedCertificate", {"tls-certificate", 16}, kPage, -1202},
                    Case{"ExpiredCertificateOfAnUnknownAuthority", {"tls-certificate", 9}, kPage, -1203},
                    Case{"RedirectToAnotherScheme", {"", 0}, "cb:/done", -1002},
                    Case{"RedirectLoop", {"", 0}, "https://host/", -1007},
                    Case{"AnotherDomain", {"some-error-quark", 5}, kPage, -1}),
    [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

TEST(CocoaErrorDomainTest, HasOneNonNegativeNumber) {
  EXPECT_EQ(domainNumber("g-io-error-quark"), domainNumber("g-io-error-quark"));
  EXPECT_GE(domainNumber("g-io-error-quark"), 0);
  EXPECT_GE(domainNumber(""), 0);
}

}  // namespace
