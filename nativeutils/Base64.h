/// @file
/// Base64 encoding and decoding, and files with Base64 content.
///
/// - The alphabet is that of RFC 4648, section 4, with "=" as padding.
/// - The encoder writes no line breaks.
/// - The decoder is more tolerant than the RFC; see `Base64Decode`.
/// - All functions may be called from any thread. None throws.
/// - A path is a byte string of any encoding.
/// - Log messages: see the table at the end of this file.

#pragma once

#include <iterator>
#include <string>

/// @cond
namespace nativeutils_base64 {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr bool isTaken(unsigned char c) {
  return (c >= '0' && c <= 'z') || c == '+' || c == '/';
}

// Returns 0 for a character that is not in the alphabet.
constexpr unsigned valueOf(unsigned char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A' + 0u;
  if (c >= 'a' && c <= 'z') return c - 'a' + 26u;
  if (c >= '0' && c <= '9') return c - '0' + 52u;
  return c == '+' ? 62u : c == '/' ? 63u : 0u;
}

struct Group {
  unsigned char characters[4] = {};
  int count = 0;  // fewer than 4 at the end of the input
};

template <typename InputIterator>
Group nextGroup(InputIterator& next, InputIterator end) {
  Group group;
  for (; group.count < 4 && next != end; ++next) {
    const auto c = static_cast<unsigned char>(*next);
    if (isTaken(c)) group.characters[group.count++] = c;
  }
  return group;
}

// The number of bytes that the group decodes to; 0 for a group that is not Base64.
constexpr int bytesIn(const Group& group) {
  const auto& c = group.characters;
  if (group.count < 4 || c[0] == '=' || c[1] == '=') return 0;
  if (c[2] == '=') return c[3] == '=' ? 1 : 0;
  return c[3] == '=' ? 2 : 3;
}

template <typename OutputIterator>
OutputIterator decodeGroup(const Group& group, OutputIterator out) {
  unsigned bits = 0;
  for (const unsigned char c : group.characters)
    bits = bits << 6 | valueOf(c);
  const int bytes = bytesIn(group);
  for (int i = 0; i < bytes; ++i, bits <<= 8)
    *out++ = static_cast<char>(bits >> 16 & 0xFF);
  return out;
}

}  // namespace nativeutils_base64
/// @endcond

/// Appends the Base64 text of a range of bytes.
///
///     "f"  => "Zg=="      "fo"  => "Zm8="      "foo"  => "Zm9v"      ""  => ""
///
/// @param begin  of values that convert to a byte
/// @param end    of the range
/// @param out    receives characters. Must not write into the range.
/// @return `out` after the last character
template <typename InputIterator, typename OutputIterator>
OutputIterator Base64Encode(InputIterator begin, InputIterator end, OutputIterator out) {
  int offset = 0;
  unsigned carry = 0;
  for (; begin != end; ++begin) {
    const unsigned byte = static_cast<unsigned char>(*begin);
    *out++ = nativeutils_base64::kAlphabet[carry | byte >> (offset + 2)];
    carry = byte << (4 - offset) & 0x3F;
    offset += 2;
    if (offset < 6) continue;
    *out++ = nativeutils_base64::kAlphabet[carry];
    carry = 0;
    offset = 0;
  }
  if (offset == 0) return out;
  *out++ = nativeutils_base64::kAlphabet[carry];
  for (int left = offset; left < 6; left += 2)
    *out++ = '=';
  return out;
}

/// Appends the bytes of a Base64 text.
///
/// - Characters below "0" and above "z" are skipped, except "+" and "/". White space, line breaks, "-" and bytes beyond
///   ASCII are skipped characters.
/// - The other characters are decoded in groups of four.
/// - These twelve characters are not skipped and not in the alphabet; they have the value 0:
///
///       : ; < > ? @ [ \ ] ^ _ `
///
/// - Padding bits that belong to no byte are ignored.
/// - Padding does not end the text; another group may follow.
///
/// Examples:
///
///     "Zm9v\nYmFy"  => "foobar"      "Zm:v"  => "f`/"      "QQ==QQ=="  => "AA"
///
/// @param begin  of characters of one byte
/// @param end    of the range
/// @param out    receives bytes, as `char`. Must not write into the range.
/// @param ok     set to false if the text ends inside a group ("Zm9") or has a misplaced "=" ("=m9v", "Zg=a"). The
///               bytes of the groups before the error have been appended.
/// @return `out` after the last byte
template <typename InputIterator, typename OutputIterator>
OutputIterator Base64Decode(InputIterator begin, InputIterator end, OutputIterator out, bool& ok) {
  for (;;) {
    const nativeutils_base64::Group group = nativeutils_base64::nextGroup(begin, end);
    ok = group.count == 0 || nativeutils_base64::bytesIn(group) > 0;
    if (!ok || group.count == 0) return out;
    out = nativeutils_base64::decodeGroup(group, out);
  }
}

/// @cond
// Faster specializations with the same results. They are compiled into the library.
template <>
std::back_insert_iterator<std::string> Base64Encode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out);

template <>
std::back_insert_iterator<std::string> Base64Decode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out, bool& ok);
/// @endcond

/// Appends the Base64 text of a string.
///
///     "A\0B", 3  => appends "QQ=="
///
/// @param data    NUL-terminated
/// @param length  not the length of `data`; only compared with 0
/// @param out     is not cleared. May contain `data`.
/// @return false for null and for a length of 0
bool utilEncodeDataInBase64(const char* data, int length, std::string& out);

/// Replaces `out` by the bytes of a Base64 text; see `Base64Decode`.
///
/// @param base64  NUL-terminated
/// @param length  not the length of `base64`; only compared with 0
/// @param out     unchanged on failure
/// @return false for null, for a length of 0 and for a text that is not Base64
bool utilDecodeBase64Data(const char* base64, int length, std::string& out);

/// Atomically writes bytes to a file, replacing it if it exists.
///
/// - A reader, also one after a crash, sees either the previous content or all of the new content.
/// - The bytes are written to a temporary file in the same folder, flushed to the disk, and renamed to `filePath`.
/// - On failure the previous file is unchanged, no temporary file remains, and nothing is logged.
/// - A new file has the mode 0666 less the umask.
/// - A replaced file keeps its mode, and its owner if the user has the permission to set it.
/// - A symbolic link itself is replaced, not its target.
/// - A folder at the path and an empty path are failures.
///
/// @param data      may be null if `length` is 0
/// @param length    of the data, in bytes; a negative length is a failure
/// @param filePath  in an existing folder
bool utilCreateFileWithData(const void* data, int length, const std::string& filePath);

/// Does nothing, because `utilCreateFileWithData` has flushed the file. Always returns true.
bool utilFlushFileBuffers(const std::string& filePath);

/// Decodes a Base64 text into a file; see `Base64Decode` and `utilCreateFileWithData`. A text without groups creates an
/// empty file.
///
/// @param base64    NUL-terminated
/// @param length    ignored
/// @param filePath  in an existing folder
/// @return false if the text is null or not Base64, or if the file cannot be written
bool utilDecodeBase64AndCreateFileWithData(const char* base64, int length, const std::string& filePath);

/// Decodes a Base64 text into a file of a folder, which is created with its missing parents (mode 0775). The folder
/// remains if the file cannot be created.
///
/// @param base64       NUL-terminated
/// @param length       ignored
/// @param folderPath   of the folder, up to the first NUL; not changed
/// @param fileName     appended to the folder with one "/"; slashes are not normalized. Null and "" mean a new UUID.
///                     It may lead out of the folder ("../name"): check names from untrusted sources.
/// @param outFilePath  set to the path of the file; unchanged on failure
bool utilCreateTempFileAtFolderWithBase64Data(const void* base64, int length, std::string& folderPath,
                                              const char* fileName, std::string& outFilePath);

/// Appends the Base64 text of a UTF-8 text file, up to its first NUL. An empty file appends nothing.
///
/// @param filePath  of the file; a symbolic link is followed
/// @param out       is not cleared; unchanged on failure
/// @return false if the file does not exist, cannot be read or is not valid UTF-8
bool utilGetDataFromFileAndEncodeBase64(const std::string& filePath, std::string& out);

/// Creates the folder "/tmp/" + new UUID with the mode 0775 less the umask. The caller removes it.
///
/// @param outFolderPath  set to the path, 41 characters; unchanged on failure
bool utilCreateAndGetTempFolderPath(std::string& outFolderPath);

/// @file
/// ## Logs
///
/// Component "Native-Utils".
///
/// | message | level | function |
/// |---|---|---|
/// | "Invalid arguments to utilEncodeDataInBase64." | info | `utilEncodeDataInBase64` |
/// | "Invalid arguments to utilDecodeBase64Data." | info | `utilDecodeBase64Data` |
/// | "Failed to decode from base 64." | info | all functions that decode |
/// | "GetDataFromFile. File %s does not exist." | fatal | `utilGetDataFromFileAndEncodeBase64` |
/// | "GetDataFromFile. Get String error %s. From file %s" | fatal | `utilGetDataFromFileAndEncodeBase64` |
