#include "tests/macos/doubles/FileManager.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "tests/macos/doubles/SystemDoubles.h"

namespace doubles {
namespace {

std::mutex mutex;
std::vector<std::string> paths;  // numbered from 1: a zeroed reference is invalid

OSStatus statusOfError(int error) {
  switch (error) {
    case ENOENT:
      return fnfErr;
    case ENOTDIR:
      return errFSNotAFolder;
    case EACCES:
      return afpAccessDenied;
    case ENAMETOOLONG:
      return bdNamErr;
    default:
      return ioErr;
  }
}

}  // namespace

FSRef referenceTo(const std::string& path) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto entry = std::find(paths.begin(), paths.end(), path);
  const auto number = static_cast<std::size_t>(entry - paths.begin()) + 1;
  if (entry == paths.end()) paths.push_back(path);
  FSRef reference = {};
  std::memcpy(reference.hidden, &number, sizeof number);
  return reference;
}

std::string pathOf(const FSRef& reference) {
  const std::lock_guard<std::mutex> lock(mutex);
  std::size_t number = 0;
  std::memcpy(&number, reference.hidden, sizeof number);
  return number == 0 || number > paths.size() ? std::string() : paths[number - 1];
}

}  // namespace doubles

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
  if (const int status = doubles::statusOf("FSPathMakeRef")) return status;
  const auto* const text = reinterpret_cast<const char*>(path);
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(text, nullptr), std::free);
  struct stat item {};
  if (!real || ::stat(real.get(), &item) != 0) return doubles::statusOfError(errno);
  *ref = doubles::referenceTo(real.get());
  if (isDirectory != nullptr) *isDirectory = S_ISDIR(item.st_mode) ? 1 : 0;
  return noErr;
}

OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize) {
  if (const int status = doubles::statusOf("FSRefMakePath")) return status;
  const std::string text = doubles::pathOf(*ref);
  if (text.empty()) return fnfErr;
  if (text.size() >= pathBufferSize) return pathTooLongErr;
  std::memcpy(path, text.c_str(), text.size() + 1);
  return noErr;
}
