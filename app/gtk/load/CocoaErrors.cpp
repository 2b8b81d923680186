#include "app/gtk/load/CocoaErrors.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <string_view>

#include "app/Address.h"

namespace {

constexpr int kTooManyRedirects = -1007;
constexpr int kCertificateUntrusted = -1202;
constexpr int kAnyCode = std::numeric_limits<int>::min();
constexpr int kSameCode = std::numeric_limits<int>::max();

struct Row {
  std::string_view domain;
  int code;
  int cocoa;
};

constexpr Row kTable[] = {
    {"WebKitNetworkError", 301, kLoadUnsupportedAddress},  // unknown protocol
    {"WebKitNetworkError", 302, -999},                     // cancelled
    {"WebKitNetworkError", 303, -1100},                    // file does not exist
    {"WebKitPolicyError", kAnyCode, kSameCode},

    {"g-io-error-quark", 1, -1100},           // not found
    {"g-io-error-quark", 14, -1102},          // permission denied
    {"g-io-error-quark", 24, kLoadTimedOut},  // timed out
    {"g-io-error-quark", 34, -1005},          // the stream ended too early
    {"g-io-error-quark", 37, -1004},          // host unreachable
    {"g-io-error-quark", 38, -1009},          // network unreachable
    {"g-io-error-quark", 39, -1004},          // connection refused
    {"g-io-error-quark", 40, -1004},          // proxy failed
    {"g-io-error-quark", 41, -1004},          // proxy authentication failed
    {"g-io-error-quark", 42, -1004},          // proxy requires authentication
    {"g-io-error-quark", 43, -1004},          // proxy does not allow it
    {"g-io-error-quark", 44, -1005},          // connection closed
    {"g-resolver-error-quark", kAnyCode, -1003},

    {"soup-session-error-quark", 0, -1017},  // cannot parse the response
    {"soup-session-error-quark", 1, -1017},  // cannot decode it
    {"soup-session-error-quark", 2, kTooManyRedirects},
    {"soup-session-error-quark", 3, kTooManyRedirects},  // restarts
    {"soup-session-error-quark", 4, -1010},              // a redirect without an address
    {"soup-session-error-quark", 5, -1010},              // a redirect to an invalid address

    {"g-tls-error-quark", kAnyCode, -1200},
};

struct CertificateRow {
  int flag;
  int cocoa;
};

// In order of precedence: identity before validity period.
constexpr CertificateRow kCertificateTable[] = {
    {1, -1203},                  // unknown authority
    {2, kCertificateUntrusted},  // of another host
    {8, -1201},                  // expired
    {4, -1204},                  // not valid yet
};

int certificateCode(int flags) {
  for (const CertificateRow& row : kCertificateTable) {
    if ((flags & row.flag) != 0) return row.cocoa;
  }
  return kCertificateUntrusted;
}

}  // namespace

int cocoaErrorCode(const LoadError& error, const std::string& address) {
  if (error.domain.empty()) return isWebAddress(address) ? kTooManyRedirects : kLoadUnsupportedAddress;
  if (error.domain == "tls-certificate") return certificateCode(error.code);

  for (const Row& row : kTable) {
    if (row.domain != error.domain || (row.code != kAnyCode && row.code != error.code)) continue;
    return row.cocoa == kSameCode ? error.code : row.cocoa;
  }
  return kLoadUnknownError;
}

int domainNumber(const std::string& domain) {
  const std::size_t positive =
      std::hash<std::string>{}(domain) & static_cast<std::size_t>(std::numeric_limits<int>::max());
  return static_cast<int>(positive);
}
