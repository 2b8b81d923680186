/// @file
/// Conversions of text and numbers, a bounded copy, UUIDs, path components, the time, and autorelease pools.
///
/// - Text is UTF-8 by convention. It is copied byte for byte unless a function says otherwise.
/// - Functions keep no state, do not throw or block, and may be called from any thread.
/// - `const char*` arguments are NUL-terminated and must not be null unless a function says otherwise.
/// - Output arguments are unchanged if a function fails.
/// - Log messages: see the table at the end of this file.

#pragma once

#include <cstdint>
#include <string>

/// Copies the text. Always returns true.
bool utilGetStringFromNativeString(const char* nativeStr, std::string& out);

/// Copies the text with its NUL characters. Always returns true.
bool utilGetNativeStringFromString(const std::string& in, std::string& out);

/// Copies the text. Always returns true.
bool utilGetNativeStringFromArray(const char* array, std::string& out);

/// Converts the text to Unicode Normalization Form C (UAX #15). A text that is not UTF-8 is copied unchanged. Always
/// returns true.
///
///     "e" U+0301  => U+00E9
///     U+212B      => U+00C5
bool utilGetNFCNativeStringFromArray(const char* array, std::string& out);

/// Formats the number with "%d". Always returns true.
bool utilGetNativeStringFromInt(int value, std::string& out);

/// Formats the number with "%ld". Always returns true.
bool utilGetNativeStringFromLong(long value, std::string& out);

/// Formats the number with "%lld". Always returns true.
bool utilGetStringFromLongLong(long long value, std::string& out);

/// Parses the leading number of a text as `atoi` does. White space and a sign may precede it. Without a number the
/// result is 0. A number outside the range of `int` has an undefined result.
///
///     "12abc"  => 12      " -7"  => -7      "abc"  => 0
int utilGetIntFromString(const std::string& text);

/// Parses the leading number of a text as `atoll` does; see `utilGetIntFromString`.
long long utilGetLongLongFromString(const std::string& text);

/// Copies a text into an array as `strlcpy` does: at most `dstSize - 1` bytes and a terminating NUL. A longer text is
/// truncated.
///
/// @param dst      the array; null is a failure. Must not overlap the source.
/// @param dstSize  size of the array in bytes. If it is 0 or negative, the array is unchanged and the call fails.
/// @param src      the text; null is a failure
/// @param srcLen   ignored
/// @return whether the whole text was copied
bool utilStrCpy(char* dst, int dstSize, const char* src, int srcLen);

/// Creates a random UUID (RFC 9562, version 4) as text: 36 characters, upper-case. Always returns true.
///
///     => "9F0C3B6E-52A1-4D0B-8C57-1E2F6A7B8C9D"
bool utilGetUUIDString(std::string& out);

/// Gets the last component of a path, as POSIX `basename` does. The path may have any length; it ends at its first NUL.
/// Always returns true.
///
///     "/a/b/"  => "b"      "/"  => "/"      ""  => "."
bool utilGetFilePathBaseName(const std::string& path, std::string& baseName);

/// Removes the last component of a path. Works on the text only. Always returns true.
///
/// - Repeated slashes count as one. A trailing slash is ignored.
/// - The path may have any encoding. A NUL is treated as any other byte.
///
/// Examples:
///
///     "/a/b/"  => "/a"      "/"  => "/"      "file"  => ""      "~/file"  => "~"
bool utilRemoveFileSpec(std::string& path);

/// Compares two texts as `strcasecmp` does, in the locale of the process.
///
/// @return a negative number, 0 or a positive number
int utilStringCompareCaseInsensitive(const char* lhs, const char* rhs);

/// Returns the whole seconds since the Unix epoch; 0 if the clock cannot be read.
std::uint64_t utilGetCurrTime();

/// Returns whether a file, a folder or any other object exists at the path. A final symbolic link is not followed, so a
/// dangling link exists. A path below a folder without search permission does not.
bool utilPathExists(const std::string& path);

/// Opens an autorelease pool, for threads that have none. Pools nest. Has no effect on systems without autoreleased
/// objects.
///
/// @return never null; owned by the caller until `utilReleasePool`
void* utilGetPool();

/// Closes a pool and releases its objects.
///
/// @param pool  from `utilGetPool` on the same thread; null is ignored
void utilReleasePool(void* pool);

/// @file
/// ## Logs
///
/// Component "Native-Utils", level error. Functions that are not in the table log nothing.
///
/// | message | function | when |
/// |---|---|---|
/// | "srcPtr or dstPtr is NULL" | `utilStrCpy` | a pointer is null; checked before `dstSize` |
/// | "destination or source length is zero" | `utilStrCpy` | `dstSize` is 0 |
/// | "Failed to Copy SrcStr to DestStr, error: destination buffer is small" | `utilStrCpy` | the text does not fit |
/// | "Unable to get current time using gettimeofday" | `utilGetCurrTime` | the clock cannot be read |
