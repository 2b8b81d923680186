// URL syntax. Pure and thread-safe.

#pragma once

#include <string_view>

namespace platform {

// Returns whether the text is a URL of RFC 3986 with a scheme.
//
// - ASCII only, no spaces, at most one "#".
// - "%" only before two hexadecimal digits.
// - Square brackets only around a host.
//
//   "http://h/a%20b?c#d" => true   "http://h/a b" => false   "//h/a" => false   "mailto:a@b" => true
bool isUrl(std::string_view text);

}  // namespace platform
