#include "app/gtk/AddressRules.h"

#include <strings.h>

bool hasScheme(const std::string& address, std::string_view scheme) {
  return address.size() > scheme.size() && address[scheme.size()] == ':' &&
         ::strncasecmp(address.data(), scheme.data(), scheme.size()) == 0;
}

bool mayOpenOutside(const std::string& address) {
  for (const std::string_view scheme : {"http", "https", "mailto", "tel"}) {
    if (hasScheme(address, scheme)) return true;
  }
  return false;
}
