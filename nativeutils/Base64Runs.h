// The inner loops of the Base64 codec: long runs in memory, with whatever the processor has for them.

#pragma once

#include <cstddef>

namespace nativeutils {

// Turns each 3 bytes into 4 characters.
void encodeRun(const unsigned char* bytes, std::size_t groups, char* out);

struct DecodedRun {
  const unsigned char* next;  // the first character that has not been decoded
  std::size_t groups;         // of 3 bytes each
};

// How many bytes behind its last group `decodeRun` may write over.
constexpr std::size_t decodingSlack = 8;

// Decodes groups of 4 characters of the alphabet, passing over what is skipped. Stops before a group that holds
// anything else, before fewer than 4 characters, and after `mostGroups`.
DecodedRun decodeRun(const unsigned char* text, const unsigned char* end, std::size_t mostGroups, unsigned char* out);

// The same, as processors do it for which there is nothing special.
void encodeGroupwise(const unsigned char* bytes, std::size_t groups, char* out);
DecodedRun decodeGroupwise(const unsigned char* text, const unsigned char* end, std::size_t mostGroups,
                           unsigned char* out);

}  // namespace nativeutils
