#include "nativeutils/Strings.h"

#include <strings.h>
#include <sys/time.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "applog/Logger.h"
#include "nativeutils/Component.h"
#include "platform/EventLoop.h"
#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/Text.h"

using nativeutils::kComponent;

namespace {

template <typename Number>
bool format(const char* conversion, Number value, std::string& out) {
  char digits[32];
  (void)std::snprintf(digits, sizeof digits, conversion, value);  // at most 20 characters
  out = digits;
  return true;
}

}  // namespace

bool utilGetStringFromNativeString(const char* nativeStr, std::string& out) {
  out = nativeStr;
  return true;
}

bool utilGetNativeStringFromString(const std::string& in, std::string& out) {
  out = in;
  return true;
}

bool utilGetNativeStringFromArray(const char* array, std::string& out) {
  out = array;
  return true;
}

bool utilGetNFCNativeStringFromArray(const char* array, std::string& out) {
  const platform::AutoreleaseScope scope;
  out = platform::canonicallyComposed(array);
  return true;
}

bool utilGetNativeStringFromInt(int value, std::string& out) {
  return format("%d", value, out);
}

bool utilGetNativeStringFromLong(long value, std::string& out) {
  return format("%ld", value, out);
}

bool utilGetStringFromLongLong(long long value, std::string& out) {
  return format("%lld", value, out);
}

int utilGetIntFromString(const std::string& text) {
  return std::atoi(text.c_str());
}

long long utilGetLongLongFromString(const std::string& text) {
  return std::atoll(text.c_str());
}

bool utilStrCpy(char* dst, int dstSize, const char* src, int /*srcLen*/) {
  if (dst == nullptr || src == nullptr) {
    Logger::getInstance()->logError(kComponent, "srcPtr or dstPtr is NULL");
    return false;
  }
  if (dstSize == 0) {
    Logger::getInstance()->logError(kComponent, "destination or source length is zero");
    return false;
  }

  const std::size_t length = std::strlen(src);
  const std::size_t capacity = dstSize > 0 ? static_cast<std::size_t>(dstSize) : 0;
  if (capacity > 0) {
    const std::size_t copied = std::min(length, capacity - 1);
    std::memcpy(dst, src, copied);
    dst[copied] = '\0';
  }
  if (length < capacity) return true;
  Logger::getInstance()->logError(kComponent, "Failed to Copy SrcStr to DestStr, error: destination buffer is small");
  return false;
}

bool utilGetUUIDString(std::string& out) {
  out = platform::randomUuidText();
  return true;
}

bool utilGetFilePathBaseName(const std::string& path, std::string& baseName) {
  baseName = platform::baseName(path);
  return true;
}

bool utilRemoveFileSpec(std::string& path) {
  const platform::AutoreleaseScope scope;
  path = platform::deletingLastPathComponent(path);
  return true;
}

int utilStringCompareCaseInsensitive(const char* lhs, const char* rhs) {
  return ::strcasecmp(lhs, rhs);
}

std::uint64_t utilGetCurrTime() {
  timeval now{};
  if (::gettimeofday(&now, nullptr) != 0) {
    Logger::getInstance()->logError(kComponent, "Unable to get current time using gettimeofday");
    return 0;
  }
  return static_cast<std::uint64_t>(now.tv_sec);
}

bool utilPathExists(const std::string& path) {
  return platform::exists(path);
}

void* utilGetPool() {
  return platform::openAutoreleasePool();
}

void utilReleasePool(void* pool) {
  platform::closeAutoreleasePool(pool);
}
