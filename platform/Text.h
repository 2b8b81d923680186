// Text as Unicode sees it. Pure and thread-safe.

#pragma once

#include <string>
#include <string_view>

namespace platform {

// Whether the bytes are UTF-8 (RFC 3629): nothing overlong, no surrogates, nothing above U+10FFFF. A NUL is a character
// like any other.
bool isUtf8(std::string_view bytes);

// The NUL-terminated text in Unicode Normalization Form C (UAX #15). A text that is not UTF-8 comes back as it is, the
// whole of it, for nobody knows what it stands for.
//   "e" U+0301     => U+00E9
//   "e" U+0301 FF  => "e" U+0301 FF
std::string canonicallyComposed(const char* text);

// A random UUID (RFC 9562, version 4) as text, upper-case. A child of `fork` gets others than its parent. On macOS ""
// when Core Foundation has no memory for one.
//   => "9F0C3B6E-52A1-4D0B-8C57-1E2F6A7B8C9D"
std::string randomUuidText();

}  // namespace platform
