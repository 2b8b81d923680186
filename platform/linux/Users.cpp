#include "platform/Users.h"

#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/Text.h"
#include "platform/linux/Glib.h"

namespace platform {
namespace {

using Text = Owned<char, std::free>;

// Sessions of other classes are login screens and lock screens.
bool isUserSession(const char* session) {
  char* name = nullptr;
  if (::sd_session_get_class(session, &name) < 0) return false;
  const Text sessionClass(name);
  return std::strncmp(sessionClass.get(), "user", 4) == 0;
}

constexpr std::size_t kMaxPathLength = 1023;

std::string userDataFolder() {
  const char* folder = std::getenv("XDG_DATA_HOME");
  if (folder != nullptr && folder[0] == '/') return folder;
  const std::string home = homeFolder();
  return home.empty() ? home : home + "/.local/share";
}

std::string pathOf(FolderDomain domain, FolderKind kind) {
  const bool support = kind == FolderKind::kApplicationSupport;
  switch (domain) {
    case FolderDomain::kUser:
      return support ? userDataFolder() : "";
    case FolderDomain::kLocal:
      return support ? "/usr/local/share" : "/opt";
    case FolderDomain::kSystem:
      return support ? "/usr/share" : "";
  }
  return "";
}

// Returns 0 or an `errno`.
int createFolder(const std::string& folder, mode_t mode) {
  if (::mkdir(folder.c_str(), mode) == 0) return 0;
  const int error = errno;
  struct stat item {};
  if (::stat(folder.c_str(), &item) != 0) return error;
  return S_ISDIR(item.st_mode) ? 0 : ENOTDIR;
}

// Starts with the deepest folder, because the process may have no access to those above an existing one. Unlike
// `std::filesystem::create_directories`, sets the mode of every new folder and accepts an existing one on any error.
int createFolders(const std::string& path, mode_t mode) {
  const int error = createFolder(path, mode);
  const std::size_t end = path.find_last_not_of('/');
  const std::size_t slash = end == std::string::npos ? end : path.rfind('/', end);
  if (error != ENOENT || slash == std::string::npos || slash == 0) return error;
  const int parentError = createFolders(path.substr(0, slash), mode);
  return parentError != 0 ? parentError : createFolder(path, mode);
}

#ifdef SYS_setgroups32
constexpr long kSetGroups = SYS_setgroups32;  // the older call has groups of 16 bits
#else
constexpr long kSetGroups = SYS_setgroups;
#endif

// The function of the C library changes all threads.
bool setGroupsOfThread(const std::vector<gid_t>& groups) {
  return ::syscall(kSetGroups, groups.size(), groups.data()) == 0;
}

// Both functions return the previous id, and refuse this one.
constexpr uid_t kNoUser = static_cast<uid_t>(-1);
constexpr gid_t kNoGroup = static_cast<gid_t>(-1);

uid_t fileUser() {
  return static_cast<uid_t>(::setfsuid(kNoUser));
}

gid_t fileGroup() {
  return static_cast<gid_t>(::setfsgid(kNoGroup));
}

}  // namespace

bool isOtherUser(uid_t owner) {
  constexpr uid_t kUnknownOwner = 65534;  // default of /proc/sys/kernel/overflowuid
  return owner != 0 && owner != kUnknownOwner;
}

FileRights currentFileRights() {
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(0, ::getgroups(0, nullptr))));
  groups.resize(static_cast<std::size_t>(std::max(0, ::getgroups(static_cast<int>(groups.size()), groups.data()))));
  return {fileUser(), fileGroup(), groups};
}

bool setFileRights(const FileRights& rights) {
  const bool groupsSet = setGroupsOfThread(rights.groups);
  (void)::setfsgid(rights.group);
  (void)::setfsuid(rights.user);
  return groupsSet && fileGroup() == rights.group && fileUser() == rights.user;
}

std::optional<uid_t> consoleUser() {
  char* name = nullptr;
  uid_t user = 0;
  if (::sd_seat_get_active("seat0", &name, &user) < 0) return std::nullopt;
  const Text session(name);
  if (!session || !isUserSession(session.get())) return std::nullopt;
  return user;
}

std::string homeFolder() {
  return homeFolderOf(::geteuid());
}

FolderSearch findFolder(FolderDomain domain, FolderKind kind) {
  using Failure = FolderSearch::Failure;
  const std::string path = pathOf(domain, kind);
  if (path.empty()) return {Failure::kFind, ENOENT, path};
  if (const int error = createFolders(path, domain == FolderDomain::kUser ? 0700 : 0755))
    return {Failure::kFind, error, path};
  if (path.size() > kMaxPathLength) return {Failure::kPath, ENAMETOOLONG, path};
  if (!isUtf8(path)) return {Failure::kText, EILSEQ, path};
  return {Failure::kNone, 0, path};
}

}  // namespace platform
