#include "platform/Folders.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "platform/Text.h"
#include "platform/UserFolders.h"

namespace platform {
namespace {

constexpr std::size_t longestPath = 1023;

std::string userData() {
  const char* chosen = std::getenv("XDG_DATA_HOME");
  if (chosen != nullptr && chosen[0] == '/') return chosen;
  const std::string home = homeFolder();
  return home.empty() ? home : home + "/.local/share";
}

std::string placeOf(FolderDomain domain, FolderKind kind) {
  const bool support = kind == FolderKind::applicationSupport;
  switch (domain) {
    case FolderDomain::user:
      return support ? userData() : "";
    case FolderDomain::local:
      return support ? "/usr/local/share" : "/opt";
    case FolderDomain::system:
      return support ? "/usr/share" : "";
  }
  return "";
}

int errorOfMaking(const std::string& folder, mode_t mode) {
  if (::mkdir(folder.c_str(), mode) == 0) return 0;
  const int error = errno;
  struct stat there {};
  if (::stat(folder.c_str(), &there) != 0) return error;
  return S_ISDIR(there.st_mode) ? 0 : ENOTDIR;
}

// From the deepest one upwards until one exists or can be made, since those above may not even be looked at.
int makeFolders(const std::string& path, mode_t mode) {
  const int error = errorOfMaking(path, mode);
  const std::size_t end = path.find_last_not_of('/');
  const std::size_t slash = end == std::string::npos ? end : path.rfind('/', end);
  if (error != ENOENT || slash == std::string::npos || slash == 0) return error;
  const int errorAbove = makeFolders(path.substr(0, slash), mode);
  return errorAbove != 0 ? errorAbove : errorOfMaking(path, mode);
}

}  // namespace

FolderSearch findFolder(FolderDomain domain, FolderKind kind) {
  using Failure = FolderSearch::Failure;
  const std::string path = placeOf(domain, kind);
  if (path.empty()) return {Failure::find, ENOENT, path};
  if (const int error = makeFolders(path, domain == FolderDomain::user ? 0700 : 0755))
    return {Failure::find, error, path};
  if (path.size() > longestPath) return {Failure::path, ENAMETOOLONG, path};
  if (!isUtf8(path)) return {Failure::text, EILSEQ, path};
  return {Failure::none, 0, path};
}

}  // namespace platform
