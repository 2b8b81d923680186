#include "logging/LogTargetBase.h"

#include <fstream>
#include <mutex>
#include <string>

#include "logging/Helpers.h"

namespace tarn {
namespace {

bool isGiven(const char* text) {
  return text != nullptr && *text != '\0';
}

}  // namespace

LogTargetBase::LogTargetBase() {
  setDefaultValues();
}

LogTargetBase::LogTargetBase(const char* identifier) {
  setIdentifier(identifier);
  setDefaultValues();
}

void LogTargetBase::setDefaultValues() {
  separator = " | ";
  fileName = "TARN.log";
  filePath.clear();
  fileUsable = true;
  setLogLevel(INFO);
  refCount = 0;
  registered = false;
}

bool LogTargetBase::setIdentifier(const char* text) {
  if (text == nullptr) return false;
  identifier = text;
  return true;
}

void LogTargetBase::setLogLevel(Log_Level level) {
  logLevel = level;

  std::string flag;
  std::string flagName = fileName;
  if (!getTempPath(flag) || !changeFileExtension(flagName, "trace") || !appendPath(flag, flagName)) return;
  if (fileExistsAtPath(flag)) {
    logLevel = TRACE;
    return;
  }
  if (changeFileExtension(flag, "debug") && fileExistsAtPath(flag)) {
    limitLevelToDebug();
    return;
  }

  removeLastPathComponent(flag);
  if (fileExistsAtPath(flag + "/qsu.trace")) {
    logLevel = TRACE;
  } else if (fileExistsAtPath(flag + "/qsu.debug")) {
    limitLevelToDebug();
  }
}

void LogTargetBase::limitLevelToDebug() {
  if (logLevel > DEBUG) logLevel = DEBUG;
}

bool LogTargetBase::setLogFile(const char* name, const char* folder) {
  fileUsable = openLogFile(name, folder);
  return fileUsable;
}

bool LogTargetBase::openLogFile(const char* name, const char* folder) {
  std::string path;
  if (isGiven(folder)) {
    path = folder;
  } else if (!getTempPath(path)) {
    return false;
  }
  if (isGiven(name) && !isFileName(name)) return false;
  if (!appendPath(path, isGiven(name) ? name : fileName)) return false;

  filePath = path;
  getFilePathBaseName(filePath, fileName);
  if (registered) return SetStreamHandle(stream);

  std::fstream scratch;
  return SetStreamHandle(scratch);
}

void LogTargetBase::incrementRefCount() {
  const std::lock_guard<std::mutex> guard(mutex);
  ++refCount;
}

void LogTargetBase::decrementRefCount() {
  const std::lock_guard<std::mutex> guard(mutex);
  --refCount;
}

}  // namespace tarn
