#include "platform/Url.h"

#include <algorithm>
#include <cstddef>

namespace platform {
namespace {

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isHexadecimal(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isOneOf(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}

// RFC 3986, section 3.1.
bool isScheme(std::string_view text) {
  return !text.empty() && isLetter(text.front()) &&
         std::all_of(text.begin(), text.end(), [](char c) { return isLetter(c) || isDigit(c) || isOneOf(c, "+-."); });
}

// Sections 2.1 to 2.3. `separators` are the delimiters allowed in addition.
bool hasOnlyAllowed(std::string_view text, std::string_view separators) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      if (i + 2 >= text.size() || !isHexadecimal(text[i + 1]) || !isHexadecimal(text[i + 2])) return false;
      i += 2;
    } else if (!isLetter(text[i]) && !isDigit(text[i]) && !isOneOf(text[i], "-._~!$&'()*+,;=") &&
               !isOneOf(text[i], separators)) {
      return false;
    }
  }
  return true;
}

// Section 3.2: a host in square brackets is an IPv6 or later address.
bool isAuthority(std::string_view text) {
  const std::size_t user = text.rfind('@');
  if (user != std::string_view::npos && !hasOnlyAllowed(text.substr(0, user), ":")) return false;
  std::string_view host = text.substr(user == std::string_view::npos ? 0 : user + 1);
  if (host.empty() || host.front() != '[') return hasOnlyAllowed(host, ":");
  const std::size_t end = host.find(']');
  if (end == std::string_view::npos || !hasOnlyAllowed(host.substr(1, end - 1), ":")) return false;
  const std::string_view rest = host.substr(end + 1);
  return rest.empty() || (rest.front() == ':' && std::all_of(rest.begin() + 1, rest.end(), isDigit));
}

}  // namespace

bool isUrl(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || !isScheme(text.substr(0, colon))) return false;
  std::string_view rest = text.substr(colon + 1);

  const std::size_t fragment = std::min(rest.find('#'), rest.size());
  if (fragment < rest.size() && !hasOnlyAllowed(rest.substr(fragment + 1), ":@/?")) return false;
  rest = rest.substr(0, fragment);
  if (rest.substr(0, 2) != "//") return hasOnlyAllowed(rest, ":@/?");

  rest.remove_prefix(2);
  const std::size_t authority = std::min(rest.find_first_of("/?"), rest.size());
  return isAuthority(rest.substr(0, authority)) && hasOnlyAllowed(rest.substr(authority), ":@/?");
}

}  // namespace platform
