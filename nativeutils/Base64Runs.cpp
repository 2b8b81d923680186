#include "nativeutils/Base64Runs.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "nativeutils/Base64.h"
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace nativeutils {
namespace {

using nativeutils_base64::alphabet;
using nativeutils_base64::isTaken;
using nativeutils_base64::valueOf;

struct Pair {
  char characters[2];
};

constexpr std::array<Pair, 4096> makePairs() {
  std::array<Pair, 4096> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits)
    pairs[bits] = {{alphabet[bits >> 6], alphabet[bits & 0x3F]}};
  return pairs;
}

constexpr std::array<Pair, 4096> pairOf = makePairs();

// Of a character that is not in the alphabet.
constexpr std::uint32_t odd = 0x80000000;

constexpr bool isInAlphabet(unsigned char c) {
  return valueOf(c) != 0 || c == 'A';
}

constexpr std::array<std::uint32_t, 256> makeBits(int place) {
  std::array<std::uint32_t, 256> bits{};
  for (std::size_t c = 0; c < bits.size(); ++c) {
    const auto character = static_cast<unsigned char>(c);
    bits[c] = isInAlphabet(character) ? valueOf(character) << place : odd;
  }
  return bits;
}

// What a character adds to its group, by its place there.
constexpr std::array<std::uint32_t, 256> first = makeBits(18);
constexpr std::array<std::uint32_t, 256> second = makeBits(12);
constexpr std::array<std::uint32_t, 256> third = makeBits(6);
constexpr std::array<std::uint32_t, 256> fourth = makeBits(0);

// What four characters stand for; `odd` is in it when one of them is not in the alphabet.
std::uint32_t bitsOf(const unsigned char* c) {
  return first[c[0]] | second[c[1]] | third[c[2]] | fourth[c[3]];
}

void store(std::uint32_t bits, unsigned char* out) {
  out[0] = static_cast<unsigned char>(bits >> 16);
  out[1] = static_cast<unsigned char>(bits >> 8);
  out[2] = static_cast<unsigned char>(bits);
}

// How many characters are skipped from here on. A count and not a place: what is a guess here need not be waited for.
std::ptrdiff_t gapAt(const unsigned char* text, const unsigned char* end) {
  std::ptrdiff_t gap = 0;
  while (text + gap != end && !isTaken(text[gap]))
    ++gap;
  return gap;
}

#if defined(__x86_64__)

// The arithmetic of both is W. Muła's and D. Lemire's, "Faster Base64 Encoding and Decoding Using AVX2 Instructions"
// (ACM Transactions on the Web 12, 2018).

#define SVO_AVX2 __attribute__((target("avx2")))

SVO_AVX2 inline __m256i load(const unsigned char* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

SVO_AVX2 inline __m256i twice(__m128i half) {
  return _mm256_broadcastsi128_si256(half);
}

// Encodes 8 groups at a time, and leaves those that it could not load without reading beyond the last one.
SVO_AVX2 std::size_t encodeByEights(const unsigned char* bytes, std::size_t groups, char* out) {
  const __m256i spread = twice(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
  // By range of the alphabet, what a value lacks to its character.
  const __m256i lacking = twice(_mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                              '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
  std::size_t done = 0;
  for (; groups - done >= 10; done += 8) {
    const unsigned char* from = bytes + done * 3;
    const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 12));
    const __m256i three = _mm256_shuffle_epi8(_mm256_set_m128i(upper, lower), spread);

    const __m256i outer =
        _mm256_mulhi_epu16(_mm256_and_si256(three, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i inner =
        _mm256_mullo_epi16(_mm256_and_si256(three, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(outer, inner);

    // 0 for the small letters, 1 to 12 from there on, 13 for the capitals.
    const __m256i beyond = _mm256_subs_epu8(values, _mm256_set1_epi8(51));
    const __m256i capital = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
    const __m256i range = _mm256_or_si256(beyond, _mm256_and_si256(capital, _mm256_set1_epi8(13)));
    const __m256i characters = _mm256_add_epi8(values, _mm256_shuffle_epi8(lacking, range));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + done * 4), characters);
  }
  return done;
}

// Decodes a group with a gap behind its first characters. False when there is another gap, or anything else.
bool decodeTorn(const unsigned char* text, unsigned before, std::ptrdiff_t gap, unsigned char* out) {
  std::uint32_t head = 0;
  std::uint32_t tail = 0;
  std::memcpy(&head, text, 4);
  std::memcpy(&tail, text + gap, 4);
  const std::uint32_t ofTail = ~std::uint32_t{0} << before * 8;
  const std::uint32_t joined = (head & ~ofTail) | (tail & ofTail);
  unsigned char characters[4];
  std::memcpy(characters, &joined, 4);
  const std::uint32_t bits = bitsOf(characters);
  store(bits, out);
  return (bits & odd) == 0;
}

// Decodes 8 groups at a time, fewer where something else stands among them, and leaves the last ones.
SVO_AVX2 DecodedRun decodeByEights(const unsigned char* text, const unsigned char* end, std::size_t mostGroups,
                                   unsigned char* out) {
  // A character is in the alphabet when the entries of its two halves have no bit in common.
  const __m256i lowerHalf = twice(
      _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
  const __m256i upperHalf = twice(
      _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
  // By upper half, what a character lacks to its value; "/" has the entry of 1.
  const __m256i lacking =
      twice(_mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i gather = twice(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
  const __m256i joined = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
  const __m256i slash = _mm256_set1_epi8('/');

  DecodedRun run{text, 0};
  // Lines break at the same places again and again: what is a guess here need not be waited for, which makes text in
  // lines half as fast again.
  unsigned formerWhole = 0;
  while (mostGroups - run.groups >= 8 && end - run.next >= 32) {
    const __m256i characters = load(run.next);
    // The bit of 0x20 that stays in both is above what a shuffle looks at.
    const __m256i upper = _mm256_and_si256(_mm256_srli_epi32(characters, 4), slash);
    const __m256i lower = _mm256_and_si256(characters, slash);
    const __m256i wrong =
        _mm256_and_si256(_mm256_shuffle_epi8(lowerHalf, lower), _mm256_shuffle_epi8(upperHalf, upper));

    const __m256i entry = _mm256_add_epi8(_mm256_cmpeq_epi8(characters, slash), upper);
    const __m256i values = _mm256_add_epi8(characters, _mm256_shuffle_epi8(lacking, entry));
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i threes = _mm256_shuffle_epi8(_mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000)), gather);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + run.groups * 3), _mm256_permutevar8x32_epi32(threes, joined));

    const auto right = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(wrong, _mm256_setzero_si256())));
    if (right == 0xFFFFFFFF) {
      run.next += 32;
      run.groups += 8;
      continue;
    }
    const auto place = static_cast<unsigned>(__builtin_ctz(~right));
    auto whole = place / 4;
    if (whole != formerWhole) {
      asm volatile("" : "+r"(whole));  // keeps the compiler from computing the place after all
      formerWhole = whole;
    }
    run.groups += formerWhole;
    run.next += std::size_t{formerWhole} * 4;
    const unsigned before = place % 4;
    const std::ptrdiff_t gap = gapAt(run.next + before, end);
    if (gap == 0) break;
    if (before != 0) {
      if (end - run.next < gap + 4 || !decodeTorn(run.next, before, gap, out + run.groups * 3)) break;
      run.next += 4;
      ++run.groups;
    }
    run.next += gap;
  }
  return run;
}

const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;

#else

constexpr bool hasAvx2 = false;

std::size_t encodeByEights(const unsigned char*, std::size_t, char*) {
  return 0;
}

DecodedRun decodeByEights(const unsigned char* text, const unsigned char*, std::size_t, unsigned char*) {
  return {text, 0};
}

#endif

}  // namespace

void encodeGroupwise(const unsigned char* bytes, std::size_t groups, char* out) {
  for (; groups > 0; --groups, bytes += 3, out += 4) {
    const unsigned bits = unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2];
    std::memcpy(out, pairOf[bits >> 12].characters, 2);
    std::memcpy(out + 2, pairOf[bits & 0xFFF].characters, 2);
  }
}

DecodedRun decodeGroupwise(const unsigned char* text, const unsigned char* end, std::size_t mostGroups,
                           unsigned char* out) {
  DecodedRun run{text, 0};
  while (run.groups < mostGroups && end - run.next >= 4) {
    const unsigned char* const start = run.next;
    const unsigned char* behind = start + 4;
    std::uint32_t bits = bitsOf(start);
    if ((bits & odd) != 0) {
      run.next += gapAt(start, end);
      if (run.next != start) continue;
      behind = start;
      bits = bitsOf(nativeutils_base64::nextGroup(behind, end).characters);  // NUL for what is missing
      if ((bits & odd) != 0) return run;
    }
    store(bits, out + run.groups * 3);
    run.next = behind;
    ++run.groups;
  }
  return run;
}

void encodeRun(const unsigned char* bytes, std::size_t groups, char* out) {
  const std::size_t done = hasAvx2 ? encodeByEights(bytes, groups, out) : 0;
  encodeGroupwise(bytes + done * 3, groups - done, out + done * 4);
}

DecodedRun decodeRun(const unsigned char* text, const unsigned char* end, std::size_t mostGroups, unsigned char* out) {
  const DecodedRun fast = hasAvx2 ? decodeByEights(text, end, mostGroups, out) : DecodedRun{text, 0};
  const DecodedRun rest = decodeGroupwise(fast.next, end, mostGroups - fast.groups, out + fast.groups * 3);
  return {rest.next, fast.groups + rest.groups};
}

}  // namespace nativeutils
