#include "app/Address.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <utility>

#include "applog/Redaction.h"

namespace {

using Redirects = std::initializer_list<std::string>;

constexpr char kHidden[] = "…";

constexpr std::string_view kEngineSchemes[] = {"webkit", "resource", "inspector-resource", "webkit-pdfjs-viewer"};

constexpr std::string_view kInlineSchemes[] = {"javascript", "data", "blob", "about"};

constexpr std::string_view kCredentials[] = {
    "code",      "access_token",  "id_token",    "id_token_hint", "refresh_token",    "logout_token", "token",
    "assertion", "client_secret", "device_code", "code_verifier", "client_assertion", "samlresponse", "samlart",
    "ticket",    "sid",           "session",     "password",      "passwd",           "pwd",          "pin",
    "otp",       "key",           "sig",         "signature",
};

constexpr int kMaxEncodings = 8;  // bounds the time for an address that a page has written

template <std::size_t size>
bool hasOneOf(const std::string_view (&schemes)[size], const std::string& address) {
  return std::any_of(std::begin(schemes), std::end(schemes), [&](auto scheme) { return hasScheme(address, scheme); });
}

// As the URL Standard prepares an address for its parser.
std::string withoutIgnoredCharacters(const std::string& address) {
  const auto isIgnoredAtStart = [](unsigned char c) { return c <= ' '; };
  std::string rest(std::find_if_not(address.begin(), address.end(), isIgnoredAtStart), address.end());
  const auto isIgnored = [](char c) { return c == '\t' || c == '\n' || c == '\r'; };
  rest.erase(std::remove_if(rest.begin(), rest.end(), isIgnored), rest.end());
  return rest;
}

bool beginsWithIgnoringCase(const std::string& text, const std::string& prefix) {
  return !prefix.empty() && ::strncasecmp(text.c_str(), prefix.c_str(), prefix.size()) == 0;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int letter = std::tolower(static_cast<unsigned char>(c));
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    int c = static_cast<unsigned char>(text[i]);
    if (c == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
      c = hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]);
      i += 2;
    }
    decoded += static_cast<char>(c);
  }
  return decoded;
}

bool isCredential(std::string_view name) {
  std::string decoded = percentDecoded(name);
  std::transform(decoded.begin(), decoded.end(), decoded.begin(), [](unsigned char c) { return std::tolower(c); });
  return std::find(std::begin(kCredentials), std::end(kCredentials), decoded) != std::end(kCredentials);
}

// Returns where the value of the first credential begins, or npos. A name may also follow ";", or the "?" or "#" of a
// route inside a fragment.
std::size_t findCredential(std::string_view parameters) {
  for (std::size_t begin = 0; begin < parameters.size();) {
    const std::size_t end = std::min(parameters.find_first_of("&;?#", begin), parameters.size());
    const std::size_t equals = parameters.substr(0, end).find('=', begin);
    if (equals != std::string_view::npos && isCredential(parameters.substr(begin, equals - begin))) return equals + 1;
    begin = end + 1;
  }
  return std::string_view::npos;
}

// `address` has neither query nor fragment. Its authority ends at the next slash, its user info at the last "@".
std::string withoutPassword(std::string address) {
  const std::size_t slashes = address.find("//");
  if (slashes == std::string::npos) return address;
  const std::size_t begin = slashes + 2;
  const std::size_t end = address.find('/', begin);
  const std::size_t at = address.substr(0, end).rfind('@');
  const std::size_t colon = address.find(':', begin);
  if (at == std::string::npos || at < begin || colon >= at) return address;
  return address.replace(colon + 1, at - colon - 1, kHidden);
}

bool containsPassword(const std::string& text) {
  for (std::size_t slashes = text.find("//"); slashes != std::string::npos; slashes = text.find("//", slashes + 1)) {
    const std::size_t end = std::min(text.find_first_of("/?#", slashes + 2), text.size());
    const std::string authority = text.substr(slashes, end - slashes);
    if (withoutPassword(authority) != authority) return true;
  }
  return false;
}

bool containsParametersOf(const std::string& redirect, const std::string& text) {
  if (redirect.empty()) return false;
  const auto isSameLetter = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
  const auto found = std::search(text.begin(), text.end(), redirect.begin(), redirect.end(), isSameLetter);
  return std::any_of(found, text.end(), [](char c) { return c == '?' || c == '#'; });
}

// Whether `encoded`, a part of an address, contains an address with something that is not logged. Credentials that
// follow their names without percent-encoding are not considered.
bool containsSecretAddress(std::string_view encoded, const Redirects& redirects) {
  std::string text(encoded);
  for (int i = 0; i <= kMaxEncodings; ++i) {
    const auto isParameterOf = [&](const std::string& redirect) { return containsParametersOf(redirect, text); };
    if (containsPassword(text) || std::any_of(redirects.begin(), redirects.end(), isParameterOf)) return true;
    std::string decoded = percentDecoded(text);
    if (decoded == text) return false;
    text = std::move(decoded);
    if (containsToken(text.c_str()) || findCredential(text) != std::string::npos) return true;
  }
  return true;
}

// `parameter` has no "&". Keeps what precedes the credential, or only the name, if it is harmless itself.
std::string withoutCredential(std::string_view parameter, const Redirects& redirects) {
  const std::size_t credential = findCredential(parameter);
  const std::size_t equals = parameter.find('=');
  const std::size_t value = equals + 1;  // 0 without a name
  std::string_view kept = parameter.substr(0, credential);
  if (containsSecretAddress(kept.substr(value), redirects)) kept = kept.substr(0, value);
  if (containsSecretAddress(kept.substr(0, equals), redirects)) kept = {};
  const bool isWhole = credential == std::string_view::npos && kept.size() == parameter.size();
  return std::string(kept) + (isWhole ? "" : kHidden);
}

std::string withoutCredentials(std::string_view parameters, const Redirects& redirects) {
  std::string result;
  for (;;) {
    const std::size_t end = parameters.find('&');
    result += withoutCredential(parameters.substr(0, end), redirects);
    if (end == std::string_view::npos) return result;
    result += '&';
    parameters.remove_prefix(end + 1);
  }
}

// Also encodes the control characters U+0080 to U+009F, which some terminals interpret.
std::string withoutControls(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const auto previous = static_cast<unsigned char>(i > 0 ? text[i - 1] : 0);
    const bool beginsC1 = c == 0xC2 && next >= 0x80 && next < 0xA0;
    const bool endsC1 = previous == 0xC2 && c >= 0x80 && c < 0xA0;
    if (c >= ' ' && c != 0x7F && !beginsC1 && !endsC1) {
      result += text[i];
    } else {
      result += percentEncoded(text[i]);
    }
  }
  return result;
}

}  // namespace

bool hasScheme(const std::string& address, std::string_view scheme) {
  return address.size() > scheme.size() && address[scheme.size()] == ':' &&
         ::strncasecmp(address.data(), scheme.data(), scheme.size()) == 0;
}

bool isWebAddress(const std::string& address) {
  return hasScheme(address, "http") || hasScheme(address, "https");
}

bool isContactAddress(const std::string& address) {
  return hasScheme(address, "mailto") || hasScheme(address, "tel");
}

bool mayOpenOutside(const std::string& address) {
  return isWebAddress(address) || isContactAddress(address);
}

bool isEngineAddress(const std::string& address) {
  return hasOneOf(kEngineSchemes, address);
}

bool mayFollow(const std::string& address, const std::string& page) {
  const std::string target = withoutIgnoredCharacters(address);
  if (hasScheme(target, "file")) return hasScheme(page, "file");
  return !hasOneOf(kInlineSchemes, target) && !isEngineAddress(target);
}

std::string percentEncoded(char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  return {'%', kDigits[value >> 4], kDigits[value & 15]};
}

std::string loggableAddress(const std::string& address, std::initializer_list<std::string> redirects) {
  if (containsToken(address.c_str())) return withoutControls(address);

  const bool isRedirect = std::any_of(redirects.begin(), redirects.end(), [&](const std::string& redirect) {
    return beginsWithIgnoringCase(address, redirect);
  });
  const auto parameters = [&](std::string_view text) {
    if (text.size() < 2) return std::string(text);
    return text[0] + (isRedirect ? std::string(kHidden) : withoutCredentials(text.substr(1), redirects));
  };

  const std::size_t fragment = std::min(address.find('#'), address.size());
  const std::size_t query = std::min(address.find('?'), fragment);
  return withoutControls(withoutPassword(address.substr(0, query)) +
                         parameters(std::string_view(address).substr(query, fragment - query)) +
                         parameters(std::string_view(address).substr(fragment)));
}
