/// @file
/// Text, numbers and paths: copies between kinds of text, numbers as text and back, bounded copies, UUIDs, the two ways
/// of taking a path apart, the time, and scopes for autoreleased objects.
///
/// Text is UTF-8 by convention and copied byte for byte unless a function says otherwise. Results go into output
/// arguments, which hold what they held before when a function fails. No function keeps anything between calls, throws
/// or waits, and all may be called from any thread. Arguments of the kind `const char*` end with a NUL and must not be
/// null unless a function says otherwise. What is logged is logged at error level under the component "Native-Utils".

#pragma once

#include <cstdint>
#include <string>

/// Copies the text. Always true.
bool utilGetStringFromNativeString(const char* nativeStr, std::string& out);

/// Copies the text, NUL characters included. Always true.
bool utilGetNativeStringFromString(const std::string& in, std::string& out);

/// Copies the text. Always true.
bool utilGetNativeStringFromArray(const char* array, std::string& out);

/// The text in Unicode Normalization Form C (UAX #15): canonically decomposed, then composed. Always true.
///
/// A text that is not UTF-8 is copied as it is, the whole of it, since its characters are not known.
///
///     "e" U+0301  => U+00E9
///     U+212B      => U+00C5
bool utilGetNFCNativeStringFromArray(const char* array, std::string& out);

/// The number as "%d" prints it. Always true.
bool utilGetNativeStringFromInt(int value, std::string& out);

/// The number as "%ld" prints it. Always true.
bool utilGetNativeStringFromLong(long value, std::string& out);

/// The number as "%lld" prints it. Always true.
bool utilGetStringFromLongLong(long long value, std::string& out);

/// The number that the text begins with, as `atoi` reads it: white space and a sign may come first, reading stops at
/// the first character that is no digit, and without a number the answer is 0. Errors are not told; what a number
/// beyond the range of `int` gives is the C library's affair.
///
///     "12abc"  => 12      " -7"  => -7      "abc"  => 0
int utilGetIntFromString(const std::string& text);

/// The number that the text begins with, as `atoll` reads it; see `utilGetIntFromString`.
long long utilGetLongLongFromString(const std::string& text);

/// Copies a text into an array as `strlcpy` does: at most `dstSize - 1` bytes, and always a NUL behind them.
///
/// True when the whole text found room. A text that did not is cut, and "Failed to Copy SrcStr to DestStr, error:
/// destination buffer is small" is logged. A null pointer logs "srcPtr or dstPtr is NULL", and a size of 0 "destination
/// or source length is zero", in this order; both leave the array alone, and so does a negative size, which is too
/// small for any text.
///
/// @param dst      where the copy goes; null is an error. Must not overlap the source.
/// @param dstSize  how many bytes the array has
/// @param src      the text; null is an error
/// @param srcLen   not looked at
bool utilStrCpy(char* dst, int dstSize, const char* src, int srcLen);

/// A new random UUID (RFC 9562, version 4) in its text form of 36 characters, upper-case. Always true.
///
///     => "9F0C3B6E-52A1-4D0B-8C57-1E2F6A7B8C9D"
bool utilGetUUIDString(std::string& out);

/// The last component of a path, as POSIX `basename` returns it; the path ends at its first NUL. Always true: paths of
/// any length have one. Logs nothing.
///
///     "/a/b/"  => "b"      "/"  => "/"      ""  => "."
bool utilGetFilePathBaseName(const std::string& path, std::string& baseName);

/// Replaces a path by its parent, as text: the file system is not asked. Repeated slashes count as one and a trailing
/// slash counts for nothing. False, with the path unchanged, where a system has no path for the bytes; here every byte
/// string is a path, whatever its encoding, so the answer is always true. A NUL is a byte like others here; for the
/// functions that look at files a path ends at its first one. Logs nothing.
///
///     "/a/b/"  => "/a"      "/"  => "/"      "file"  => ""      "~/file"  => "~"
bool utilRemoveFileSpec(std::string& path);

/// Compares as `strcasecmp` does, in the process's locale: negative, zero or positive.
int utilStringCompareCaseInsensitive(const char* lhs, const char* rhs);

/// Whole seconds since the Unix epoch. 0 when the clock cannot be read, with "Unable to get current time using
/// gettimeofday" in the log.
std::uint64_t utilGetCurrTime();

/// Whether something of any kind is at the path. A final symbolic link is not followed: one whose target is missing
/// counts. What cannot be looked at, since a folder on the way is closed to this user, does not.
bool utilPathExists(const std::string& path);

/// Opens a scope in which the system collects autoreleased objects, for threads that have none of their own. Scopes
/// nest. On systems without such objects it does nothing.
///
/// @return the scope, never null: the caller's until `utilReleasePool`
void* utilGetPool();

/// Closes a scope and releases what was autoreleased in it.
///
/// @param pool  what `utilGetPool` returned, on the same thread; null is none
void utilReleasePool(void* pool);
