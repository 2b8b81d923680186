// The syntax of URLs. Pure and thread-safe.

#pragma once

#include <string_view>

namespace platform {

// Whether the text has a scheme and is otherwise made of what RFC 3986 allows: no blanks, no letters beyond ASCII, "%"
// only before two hexadecimal digits, brackets only around a host, one "#" at most.
//   "http://h/a%20b?c#d" => true   "http://h/a b" => false   "//h/a" => false   "mailto:a@b" => true
bool isUrl(std::string_view text);

}  // namespace platform
