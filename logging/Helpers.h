// Time, folder and path helpers of the logging library.
//
// - On failure a function returns false and leaves its outputs unchanged, unless stated otherwise.
// - No function logs or throws.
// - Path functions follow the rules of platform/Path.h.

#pragma once

#include <sys/time.h>

#include <cstdarg>
#include <cstddef>
#include <string>

#include "platform/Text.h"

namespace tarn {

// Returns the result of `gettimeofday`.
int getCurrentTime(timeval& time);

// Formats the current local time for use in a file name.
//   => "03-07-2014 16-05-09"
bool getDatetime(std::string& out);

// Formats at most size - 2 characters and a terminator. Returns the result of `vsnprintf`. If `arguments` is null,
// writes nothing and returns 0.
int getLogMessage(char* buffer, std::size_t size, const char* format, va_list* arguments)
    __attribute__((format(printf, 3, 0)));

std::string getStringFromInt(int number);

using platform::orEmpty;

bool utilGetCurrentOSVersion(int& major, int& minor, int& bugFix);

// Returns the home folder of the effective user, "" if it is unknown. Always returns true.
bool getUserFolderPath(std::string& out);

// Returns the home folder of the console user, or of the effective user if there is no console user.
//
// Changes the effective user id of the process during the lookup. No other thread may depend on that id meanwhile.
bool getUserFolder(std::string& out);

// Returns the default log folder, which is that of `getUserFolder`. Creates it if it does not exist.
bool getTempPath(std::string& out);

// Creates a folder and its missing parents. Returns true for an existing folder.
bool createDirectoryPath(const std::string& path);

// Returns whether the path names something other than a folder. Follows symbolic links.
bool fileExistsAtPath(const std::string& path);

// Returns whether the path names a folder. Follows symbolic links.
bool folderExitsAtPath(const std::string& path);

bool renamePathToPath(const std::string& from, const std::string& to);

// Returns the size in bytes. Does not follow symbolic links.
bool getFileSize(const std::string& path, long long& size);

//   ("/a/", "b") => "/a/b"
bool appendPath(std::string& path, const std::string& component);

//   "/a/b/c.log" => "/a/b"
bool removeLastPathComponent(std::string& path);

// Returns whether the text is a file name without a folder part.
//   "TARN.log"      => true
//   "logs/TARN.log" => false
bool isFileName(const std::string& text);

// Returns the result of POSIX `basename`. Always true.
//   "/a/b" => "b"
//   ""     => "."
bool getFilePathBaseName(const std::string& path, std::string& out);

// Returns the text after the last "." of the whole path. Returns false if there is none.
//   "a.b/c" => "b/c"
//   "name." => ""
bool getFileExtension(const std::string& path, std::string& extension);

// Removes the extension of the last component.
//   "name.tar.gz" => "name.tar"
//   "/x.d/name"   => "/x.d/name"
bool removeFileExtension(std::string& path);

//   ("name", "log") => "name.log"
//   ("name", "")    => "name."
//   ("name", "a/b") => false
bool addFileExtension(std::string& path, const std::string& extension);

//   ("dir/TARN.log", "trace") => "dir/TARN.trace"
//   ("name.log", "a/b")       => false
bool changeFileExtension(std::string& path, const std::string& extension);

}  // namespace tarn
