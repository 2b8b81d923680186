#include <cstddef>
#include <string>
#include <string_view>

#include "applog/Logger.h"
#include "nativeutils/Base64.h"
#include "nativeutils/Component.h"
#include "nativeutils/Files.h"
#include "platform/AtomicFile.h"
#include "platform/EventLoop.h"
#include "platform/FileKind.h"
#include "platform/FileText.h"
#include "platform/Path.h"
#include "platform/Text.h"

using nativeutils::kComponent;

namespace {

// The Base64 functions only compare the length with 0.
constexpr int kAnyLength = 1;

bool createFolder(const std::string& path) {
  constexpr auto kUnchanged = static_cast<unsigned int>(-1);
  return utilCreateDirectoryPathWithAttributes(path.c_str(), kUnchanged, kUnchanged, 0775);
}

bool createFile(std::string_view bytes, const std::string& path) {
  if (platform::untilNul(path).empty()) return false;
  const platform::AutoreleaseScope scope;
  return platform::writeFileAtomically(path, bytes);
}

}  // namespace

bool utilCreateFileWithData(const void* data, int length, const std::string& filePath) {
  if (length < 0 || (data == nullptr && length > 0)) return false;
  return createFile({static_cast<const char*>(data), static_cast<std::size_t>(length)}, filePath);
}

bool utilFlushFileBuffers(const std::string& /*filePath*/) {
  return true;
}

bool utilDecodeBase64AndCreateFileWithData(const char* base64, int /*length*/, const std::string& filePath) {
  constexpr const char* kNotBase64 = "=";  // logs the same message for null
  std::string bytes;
  return utilDecodeBase64Data(base64 == nullptr ? kNotBase64 : base64, kAnyLength, bytes) &&
         createFile(bytes, filePath);
}

bool utilCreateTempFileAtFolderWithBase64Data(const void* base64, int length, std::string& folderPath,
                                              const char* fileName, std::string& outFilePath) {
  const bool isNamed = fileName != nullptr && *fileName != '\0';
  const std::string filePath = platform::untilNul(folderPath) + "/" + (isNamed ? fileName : platform::randomUuidText());
  if (!createFolder(folderPath)) return false;
  if (!utilDecodeBase64AndCreateFileWithData(static_cast<const char*>(base64), length, filePath)) return false;
  outFilePath = filePath;
  return true;
}

bool utilGetDataFromFileAndEncodeBase64(const std::string& filePath, std::string& out) {
  const platform::AutoreleaseScope scope;
  if (platform::kindOf(filePath) == platform::FileKind::kNone) {
    Logger::getInstance()->logFatal(kComponent, "GetDataFromFile. File %s does not exist.", filePath.c_str());
    return false;
  }
  const platform::FileText file = platform::readUtf8File(filePath);
  if (!file.text) {
    Logger::getInstance()->logFatal(kComponent, "GetDataFromFile. Get String error %s. From file %s",
                                    file.error.empty() ? "-" : file.error.c_str(), filePath.c_str());
    return false;
  }
  return utilEncodeDataInBase64(file.text->c_str(), kAnyLength, out);
}

bool utilCreateAndGetTempFolderPath(std::string& outFolderPath) {
  const std::string path = "/tmp/" + platform::randomUuidText();
  if (!createFolder(path)) return false;
  outFolderPath = path;
  return true;
}
