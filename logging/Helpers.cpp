#include "logging/Helpers.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "platform/Machine.h"
#include "platform/Path.h"
#include "platform/Users.h"

namespace tarn {

int getCurrentTime(timeval& time) {
  return ::gettimeofday(&time, nullptr);
}

bool getDatetime(std::string& out) {
  timeval now{};
  if (getCurrentTime(now) != 0) return false;
  std::tm local{};
  ::tzset();
  ::localtime_r(&now.tv_sec, &local);

  char text[256];
  const std::size_t length = std::strftime(text, sizeof text, "%m-%d-%Y %H-%M-%S", &local);
  if (length == 0) return false;
  out.assign(text, length);
  return true;
}

int getLogMessage(char* buffer, std::size_t size, const char* format, va_list* arguments) {
  if (arguments == nullptr || size == 0) return 0;
  return std::vsnprintf(buffer, size - 1, format, *arguments);
}

std::string getStringFromInt(int number) {
  return std::to_string(number);
}

bool utilGetCurrentOSVersion(int& major, int& minor, int& bugFix) {
  const std::optional<platform::SystemVersion> version = platform::systemVersion();
  if (!version) return false;
  major = version->major;
  minor = version->minor;
  bugFix = version->bugFix;
  return true;
}

bool getUserFolderPath(std::string& out) {
  out = platform::homeFolder();
  return true;
}

// Not `platform::homeFolderOfConsoleUser`: that returns the home folder of the effective user if the process may not
// become the console user; this function fails.
bool getUserFolder(std::string& out) {
  const platform::AsUser scope(platform::consoleUser().value_or(::geteuid()));
  return scope && getUserFolderPath(out);
}

bool getTempPath(std::string& out) {
  std::string home;
  if (!getUserFolder(home)) return false;
  std::optional<std::string> logs = platform::makeLogsFolder(home);
  if (!logs) return false;
  out = std::move(*logs);
  return true;
}

bool createDirectoryPath(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  return !error && folderExitsAtPath(path);
}

bool fileExistsAtPath(const std::string& path) {
  struct stat item {};
  return ::stat(path.c_str(), &item) == 0 && !S_ISDIR(item.st_mode);
}

bool folderExitsAtPath(const std::string& path) {
  struct stat item {};
  return ::stat(path.c_str(), &item) == 0 && S_ISDIR(item.st_mode);
}

bool renamePathToPath(const std::string& from, const std::string& to) {
  return ::rename(from.c_str(), to.c_str()) == 0;
}

bool getFileSize(const std::string& path, long long& size) {
  struct stat item {};
  if (::lstat(path.c_str(), &item) != 0) return false;
  size = item.st_size;
  return true;
}

bool appendPath(std::string& path, const std::string& component) {
  path = platform::appendingPathComponent(path, component);
  return true;
}

bool removeLastPathComponent(std::string& path) {
  path = platform::deletingLastPathComponent(path);
  return true;
}

bool isFileName(const std::string& text) {
  return text == platform::lastPathComponent(text);
}

bool getFilePathBaseName(const std::string& path, std::string& out) {
  out = platform::baseName(path);
  return true;
}

bool getFileExtension(const std::string& path, std::string& extension) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string::npos) return false;
  extension = path.substr(dot + 1);
  return true;
}

bool removeFileExtension(std::string& path) {
  path = platform::deletingPathExtension(path);
  return true;
}

bool addFileExtension(std::string& path, const std::string& extension) {
  const std::optional<std::string> extended = platform::appendingPathExtension(path, extension);
  if (!extended) return false;
  path = *extended;
  return true;
}

bool changeFileExtension(std::string& path, const std::string& extension) {
  std::string changed = path;
  if (!removeFileExtension(changed) || !addFileExtension(changed, extension)) return false;
  path = changed;
  return true;
}

}  // namespace tarn
