// Time, folders and paths as the logging library needs them.
//
// A function that produces something replaces its output on success and leaves it alone on failure, unless it says
// otherwise; false is the only report, for these stand below the logger. None throws. Path functions have the rules of
// platform/Path.h.

#pragma once

#include <sys/time.h>

#include <cstdarg>
#include <cstddef>
#include <string>

namespace tarn {

// The result of `gettimeofday`.
int getCurrentTime(timeval& time);

// The local time in a form that a file name can hold.  => "03-07-2014 16-05-09"
bool getDatetime(std::string& out);

// Formats at most size - 2 characters and a terminator; the answer is that of `vsnprintf`. Without arguments nothing is
// written and the answer is 0.
int getLogMessage(char* buffer, std::size_t size, const char* format, va_list* arguments)
    __attribute__((format(printf, 3, 0)));

std::string getStringFromInt(int number);

bool utilGetCurrentOSVersion(int& major, int& minor, int& bugFix);

// The home folder of the effective user, "" when it has none; always true.
bool getUserFolderPath(std::string& out);

// The home folder of the user at the console, or else of the effective user. Becomes the console user for the length of
// the look-up: nothing that depends on the effective user id may run beside it.
bool getUserFolder(std::string& out);

// The default log folder, made when it is missing: "Library/Logs" in the user's folder. False when that is not known.
bool getTempPath(std::string& out);

// Makes the folder and its missing parents; one that exists is a success.
bool createDirectoryPath(const std::string& path);

// Something other than a folder; links are followed.
bool fileExistsAtPath(const std::string& path);

// A folder; links are followed.
bool folderExitsAtPath(const std::string& path);

bool renamePathToPath(const std::string& from, const std::string& to);

// In bytes; of a link, the link's own.
bool getFileSize(const std::string& path, long long& size);

// ("/a/", "b") => "/a/b"
bool appendPath(std::string& path, const std::string& component);

// "/a/b/c.log" => "/a/b"
bool removeLastPathComponent(std::string& path);

// Whether the text is a last path component and nothing else.  "TARN.log" => true   "logs/TARN.log" => false
bool isFileName(const std::string& text);

// As POSIX basename; always true.  "/a/b" => "b"   "" => "."
bool getFilePathBaseName(const std::string& path, std::string& out);

// What follows the last "." of the whole path.  "a.b/c" => "b/c"   "name." => ""   "name" => false
bool getFileExtension(const std::string& path, std::string& extension);

// Looks at the last component only.  "name.tar.gz" => "name.tar"   "/x.d/name" => "/x.d/name"
bool removeFileExtension(std::string& path);

// ("name", "log") => "name.log"   ("name", "") => "name."   ("name", "a/b") => false
bool addFileExtension(std::string& path, const std::string& extension);

// ("dir/TARN.log", "trace") => "dir/TARN.trace"   ("name.log", "a/b") => false
bool changeFileExtension(std::string& path, const std::string& extension);

}  // namespace tarn
