/// @file
/// Base64, and files made of it and turned into it.
///
/// The alphabet is that of RFC 4648, section 4, with "=" for padding. What is encoded has no line breaks. What is
/// decoded may have been wrapped, indented or commented by others, and is read with more patience than the RFC has; see
/// `Base64Decode`.
///
/// All functions may be called from any thread and none throws. Messages are logged under the component "Native-Utils".
/// A path is a byte string, whatever its encoding.

#pragma once

#include <iterator>
#include <string>

/// @cond
namespace nativeutils_base64 {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr bool isTaken(unsigned char c) {
  return (c >= '0' && c <= 'z') || c == '+' || c == '/';
}

// 0 for a character that is not in the alphabet.
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

// How many bytes the group yields; 0 for one that is not Base64.
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

/// Appends the Base64 text of a range of bytes: 4 characters for every 3 bytes and for what is left of 3 at the end. An
/// empty range appends nothing.
///
///     "f"  => "Zg=="      "fo"  => "Zm8="      "foo"  => "Zm9v"
///
/// @param begin  of values that convert to a byte
/// @param end    of the range
/// @param out    takes characters. Must not lead into what is read.
/// @return `out` as it is after the last character
template <typename InputIterator, typename OutputIterator>
OutputIterator Base64Encode(InputIterator begin, InputIterator end, OutputIterator out) {
  int offset = 0;
  unsigned carry = 0;
  for (; begin != end; ++begin) {
    const unsigned byte = static_cast<unsigned char>(*begin);
    *out++ = nativeutils_base64::alphabet[carry | byte >> (offset + 2)];
    carry = byte << (4 - offset) & 0x3F;
    offset += 2;
    if (offset < 6) continue;
    *out++ = nativeutils_base64::alphabet[carry];
    carry = 0;
    offset = 0;
  }
  if (offset == 0) return out;
  *out++ = nativeutils_base64::alphabet[carry];
  for (int left = offset; left < 6; left += 2)
    *out++ = '=';
  return out;
}

/// Appends the bytes that a Base64 text stands for.
///
/// Characters below "0" and above "z" are skipped wherever they stand, except "+" and "/": white space, line breaks,
/// "-", bytes beyond ASCII. The others are taken four at a time. Those among them that are not in the alphabet, twelve
/// in number, stand for the value 0, as "A" does:
///
///     : ; < > ? @ [ \ ] ^ _ `
///
/// Padding bits that reach no byte are not looked at. Padding does not end the text; another group may follow.
///
///     "Zm9v\nYmFy"  => "foobar"      "Zm:v"  => "f`/"      "QQ==QQ=="  => "AA"
///
/// @param begin  of characters of one byte
/// @param end    of the range
/// @param out    takes bytes, as `char`. Must not lead into what is read.
/// @param ok     false when the text ends inside a group ("Zm9") or has "=" where none can be ("=m9v", "Zg=a"). The
///               bytes of the groups before that have been appended.
/// @return `out` as it is after the last byte
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
// The same results, several times faster. Only these two are in the library's binary.
template <>
std::back_insert_iterator<std::string> Base64Encode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out);

template <>
std::back_insert_iterator<std::string> Base64Decode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out, bool& ok);
/// @endcond

/// Appends the Base64 text of a text. False, with "Invalid arguments to utilEncodeDataInBase64." logged at info level,
/// for null and for a length of 0.
///
///     "A\0B", 3  => appends "QQ=="
///
/// @param data    read up to its first NUL, wherever that is; it must have one
/// @param length  only asked whether it is 0
/// @param out     is not cleared. The text may lie in it.
bool utilEncodeDataInBase64(const char* data, int length, std::string& out);

/// Replaces `out` by the bytes that a Base64 text stands for, as `Base64Decode` reads it. False for null and for a
/// length of 0, with "Invalid arguments to utilDecodeBase64Data." logged, and for a text that is not Base64, with
/// "Failed to decode from base 64.", both at info level.
///
/// @param base64  read up to its first NUL, wherever that is; it must have one
/// @param length  only asked whether it is 0
/// @param out     keeps what it held when the answer is false
bool utilDecodeBase64Data(const char* base64, int length, std::string& out);

/// Puts bytes into a file. Whoever opens the file sees all of them or what was there before, also after a crash: they
/// go to a file beside it, are written through to the disk, and then the one takes the other's name. On failure what
/// was there stays, nothing new remains, and nothing is logged.
///
/// A new file gets the mode 0666 less the umask; one that is replaced hands its mode on, and its owner where this user
/// may set it. A symbolic link is replaced itself, and so is whatever else stands at the path but a folder, which is a
/// failure. So is an empty path.
///
/// @param data      null only for no bytes
/// @param length    of the data, in bytes; a negative one is a failure
/// @param filePath  in a folder that exists
bool utilCreateFileWithData(const void* data, int length, const std::string& filePath);

/// Does nothing: the bytes of `utilCreateFileWithData` are on the disk before the file has its name. Always true.
bool utilFlushFileBuffers(const std::string& filePath);

/// Puts the bytes that a Base64 text stands for into a file; see `Base64Decode` and `utilCreateFileWithData`. False
/// when the text is null or not Base64, with "Failed to decode from base 64." logged at info level, and when the file
/// cannot be written. A text of no groups makes an empty file.
///
/// @param base64    read up to its first NUL
/// @param length    not looked at
/// @param filePath  in a folder that exists
bool utilDecodeBase64AndCreateFileWithData(const char* base64, int length, const std::string& filePath);

/// Does the same for a file in a folder, which is created with its missing parents (mode 0775) and stays also when the
/// file cannot be made.
///
/// @param base64       read up to its first NUL
/// @param length       not looked at
/// @param folderPath   of the folder, up to its first NUL; not changed
/// @param fileName     joined to the folder with one "/", and no "/" is dropped; null and "" stand for a new UUID. It
///                     may lead out of the folder, "../name": who takes it from strangers must look at it first
/// @param outFilePath  becomes the path of the file; keeps what it held when the answer is false
bool utilCreateTempFileAtFolderWithBase64Data(const void* base64, int length, std::string& folderPath,
                                              const char* fileName, std::string& outFilePath);

/// Appends the Base64 text of a file of UTF-8 text, up to its first NUL. False, with a message at fatal level, when
/// there is no file ("GetDataFromFile. File %s does not exist.") and when it cannot be read or is not UTF-8 throughout
/// ("GetDataFromFile. Get String error %s. From file %s"). A file without a byte appends nothing.
///
/// @param filePath  of the file; a symbolic link is followed
/// @param out       is not cleared; keeps what it held when the answer is false
bool utilGetDataFromFileAndEncodeBase64(const std::string& filePath, std::string& out);

/// Creates a folder "/tmp/" and a new UUID, which nobody else has, with the mode 0775 less the umask. The caller
/// removes it. `outFolderPath` becomes its path, 41 characters, and keeps what it held when the answer is false.
bool utilCreateAndGetTempFolderPath(std::string& outFolderPath);
