#include "platform/Users.h"

#include <sys/stat.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "platform/Text.h"

namespace platform {
namespace {

struct Free {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

// A login screen is a session too, of a user who is nobody's; so is a screen that waits for an unlocking.
bool isSomebodys(const char* session) {
  char* answer = nullptr;
  if (::sd_session_get_class(session, &answer) < 0) return false;
  const Text kind(answer);
  return std::strncmp(kind.get(), "user", 4) == 0;
}

constexpr std::size_t longestPath = 1023;

std::string userData() {
  const char* chosen = std::getenv("XDG_DATA_HOME");
  if (chosen != nullptr && chosen[0] == '/') return chosen;
  const std::string home = homeFolder();
  return home.empty() ? home : home + "/.local/share";
}

std::string placeOf(FolderDomain domain, FolderKind kind) {
  const bool support = kind == FolderKind::kApplicationSupport;
  switch (domain) {
    case FolderDomain::kUser:
      return support ? userData() : "";
    case FolderDomain::kLocal:
      return support ? "/usr/local/share" : "/opt";
    case FolderDomain::kSystem:
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

std::optional<uid_t> consoleUser() {
  char* answer = nullptr;
  uid_t user = 0;
  if (::sd_seat_get_active("seat0", &answer, &user) < 0) return std::nullopt;
  const Text session(answer);
  if (!session || !isSomebodys(session.get())) return std::nullopt;
  return user;
}

std::string homeFolder() {
  return homeFolderOf(::geteuid());
}

FolderSearch findFolder(FolderDomain domain, FolderKind kind) {
  using Failure = FolderSearch::Failure;
  const std::string path = placeOf(domain, kind);
  if (path.empty()) return {Failure::kFind, ENOENT, path};
  if (const int error = makeFolders(path, domain == FolderDomain::kUser ? 0700 : 0755))
    return {Failure::kFind, error, path};
  if (path.size() > longestPath) return {Failure::kPath, ENAMETOOLONG, path};
  if (!isUtf8(path)) return {Failure::kText, EILSEQ, path};
  return {Failure::kNone, 0, path};
}

}  // namespace platform
