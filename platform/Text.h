// Null C strings, UTF-8 validation, Unicode normalization, and UUIDs. Thread-safe.

#pragma once

#include <string>
#include <string_view>

namespace platform {

// Returns `text`, "" for null.
inline const char* orEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

// Returns whether the bytes are UTF-8 (RFC 3629): no overlong sequences, no surrogates, nothing above U+10FFFF. NUL is
// a character.
bool isUtf8(std::string_view bytes);

// Returns the NUL-terminated text in Unicode Normalization Form C (UAX #15). Returns text that is not UTF-8 unchanged.
//   "e" U+0301     => U+00E9
//   "e" U+0301 FF  => "e" U+0301 FF
std::string canonicallyComposed(const char* text);

// Returns a random UUID (RFC 9562, version 4) in upper case. A child process after `fork` gets different UUIDs than its
// parent. macOS: "" if Core Foundation fails to allocate it.
//   => "9F0C3B6E-52A1-4D0B-8C57-1E2F6A7B8C9D"
std::string randomUuidText();

}  // namespace platform
