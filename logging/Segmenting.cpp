#include "logging/Segmenting.h"

#include <fstream>
#include <string>

#include "logging/Helpers.h"
#include "logging/LogTargetDefault.h"
#include "platform/CancellationScope.h"
#include "platform/FileCopy.h"

namespace tarn {
namespace {

constexpr long long kMaxLogSize = 10 * 1024 * 1024;

}  // namespace

bool copyContentOfFileToFile(const std::string& from, const std::string& to) {
  return platform::copyFileContents(from, to);
}

bool appendTimeStampToFile(std::string& path) {
  std::string extension;
  std::string stamp;
  getFileExtension(path, extension);
  getDatetime(stamp);
  removeFileExtension(path);
  path += " " + stamp + "." + extension;
  return true;
}

bool LogTargetDefault::SegmentLogFile(bool) {
  long long size = 0;
  if (!getFileSize(filePath, size)) return false;
  if (size < kMaxLogSize) return true;

  const platform::CancellationScope whole;
  if (stream.is_open()) stream.close();
  std::string archive = filePath;
  appendTimeStampToFile(archive);
  if (copyContentOfFileToFile(filePath, archive)) (void)cleanFile();
  return SetStreamHandle(stream);
}

bool LogTargetDefault::cleanFile() {
  if (stream.is_open()) stream.close();
  std::ofstream file(filePath, std::ios::out | std::ios::trunc);
  return file.is_open();
}

bool LogTargetDefault::renameLogFile() {
  std::string extension;
  std::string stamp;
  std::string renamed = filePath;
  getFileExtension(filePath, extension);
  getDatetime(stamp);
  removeFileExtension(renamed);
  renamed += " " + stamp;
  if (!addFileExtension(renamed, extension)) return false;

  if (fileExistsAtPath(renamed) || !renamePathToPath(filePath, renamed)) return false;
  renamedFilePath = renamed;
  return true;
}

}  // namespace tarn
