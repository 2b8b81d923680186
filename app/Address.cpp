#include "app/Address.h"

#include <strings.h>

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
