#include "app/gtk/PrivateFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "app/gtk/Glib.h"
#include "platform/FileTree.h"
#include "platform/UniqueFd.h"

namespace {

using platform::UniqueFd;

constexpr char kPrefix[] = ".svo-session-";
constexpr int kMaxDepth = 16;
constexpr int kEndTimeoutMilliseconds = 1000;
constexpr int kMaxTries = 3;  // to lock a new folder before another start takes it for an abandoned one

struct Folder {
  UniqueFd parent;
  UniqueFd self;    // locked
  UniqueFd writer;  // a pidfd
  std::string name;
  std::string path;
};

Folder folder;

UniqueFd openFolder(int parent, const char* name) {
  return UniqueFd(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Makes system calls only. Entries are read again after a removal, which may have moved them.
void removeContents(int parent, int depth) {
  alignas(dirent64) char entries[2048];
  bool removed = true;
  while (removed && ::lseek(parent, 0, SEEK_SET) == 0) {
    removed = false;
    for (ssize_t size = 0; (size = ::getdents64(parent, entries, sizeof entries)) > 0;) {
      for (ssize_t at = 0; at < size;) {
        const auto* const entry = reinterpret_cast<const dirent64*>(entries + at);
        at += entry->d_reclen;
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        bool gone = ::unlinkat(parent, entry->d_name, 0) == 0;
        if (!gone && depth > 0) {
          const UniqueFd below = openFolder(parent, entry->d_name);
          if (below) removeContents(below.get(), depth - 1);
          gone = ::unlinkat(parent, entry->d_name, AT_REMOVEDIR) == 0;
        }
        removed = removed || gone;
      }
    }
  }
}

bool isOwn(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && status.st_uid == ::geteuid();
}

// Also returns false for a folder that has been removed.
bool lock(int file) {
  struct stat status {};
  return ::flock(file, LOCK_EX | LOCK_NB) == 0 && ::fstat(file, &status) == 0 && status.st_nlink != 0;
}

// Whether only this user and root can rename or replace what is in the folder, and the folder itself.
bool isSafe(std::filesystem::path path) {
  for (;; path = path.parent_path()) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
    if (status.st_uid != 0 && status.st_uid != ::geteuid()) return false;
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0 && (status.st_mode & S_ISVTX) == 0) return false;
    if (path == path.root_path()) return true;
  }
}

// "" if it is not safe. WebKit uses the path later, so no symbolic link may remain in it.
std::string safePath(const char* path) {
  if (path == nullptr || *path != '/') return {};
  std::error_code failed;
  const std::filesystem::path canonical = std::filesystem::canonical(path, failed);
  return !failed && isSafe(canonical) ? canonical.string() : std::string();
}

std::string safeParent() {
  const std::string runtime = safePath(g_getenv("XDG_RUNTIME_DIR"));
  return runtime.empty() ? safePath(g_get_tmp_dir()) : runtime;
}

bool create(const std::string& parent) {
  std::string path = parent + "/" + kPrefix + "XXXXXX";
  if (::mkdtemp(path.data()) == nullptr) return false;
  folder.parent.reset(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  folder.name = path.substr(parent.size() + 1);
  folder.path = path;
  folder.self = openFolder(folder.parent.get(), folder.name.c_str());
  if (folder.self && isOwn(folder.self.get()) && lock(folder.self.get())) return true;
  folder = {};
  return false;
}

}  // namespace

void removeAbandonedFolders() {
  const std::string path = safeParent();
  if (path.empty()) return;
  const UniqueFd parent(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  for (const platform::FolderEntry& each : platform::entriesOf(path)) {
    if (each.kind != platform::EntryKind::kFolder || each.name.rfind(kPrefix, 0) != 0) continue;
    const UniqueFd found = openFolder(parent.get(), each.name.c_str());
    if (!found || !isOwn(found.get()) || !lock(found.get())) continue;
    removeContents(found.get(), kMaxDepth);
    (void)::unlinkat(parent.get(), each.name.c_str(), AT_REMOVEDIR);
  }
}

const std::string& createPrivateFolder() {
  const std::string parent = safeParent();
  for (int i = 0; !parent.empty() && i < kMaxTries && !create(parent); ++i) {
  }
  return folder.path;
}

const std::string& privateFolder() {
  return folder.path;
}

void setWriterOfPrivateFolder(int process) {
  if (folder.self) folder.writer.reset(::fcntl(process, F_DUPFD_CLOEXEC, 0));
}

void removePrivateFolder() {
  if (!folder.self) return;
  if (folder.writer && ::syscall(SYS_pidfd_send_signal, folder.writer.get(), SIGKILL, nullptr, 0) == 0) {
    pollfd end{folder.writer.get(), POLLIN, 0};
    (void)::poll(&end, 1, kEndTimeoutMilliseconds);
  }
  removeContents(folder.self.get(), kMaxDepth);
  (void)::unlinkat(folder.parent.get(), folder.name.c_str(), AT_REMOVEDIR);
}
