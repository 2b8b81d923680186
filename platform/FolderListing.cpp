#include "platform/FolderListing.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace platform {
namespace {

bool isDots(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

EntryKind kindOf(int folder, const dirent& entry) {
  switch (entry.d_type) {
    case DT_UNKNOWN:
      return kindAt(folder, entry.d_name);
    case DT_DIR:
      return EntryKind::folder;
    case DT_LNK:
      return EntryKind::link;
    default:
      return EntryKind::other;
  }
}

}  // namespace

int FolderListing::read(DIR* folder) {
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(folder);
    if (entry == nullptr && errno == EINTR) continue;
    if (entry == nullptr) return errno;
    if (isDots(entry->d_name)) continue;
    items_.push_back({names_.size(), kindOf(::dirfd(folder), *entry)});
    names_.append(entry->d_name, std::strlen(entry->d_name) + 1);
  }
}

EntryKind kindAt(int folder, const char* name) {
  struct stat object {};
  if (::fstatat(folder, name, &object, AT_SYMLINK_NOFOLLOW) != 0) return EntryKind::other;
  if (S_ISDIR(object.st_mode)) return EntryKind::folder;
  return S_ISLNK(object.st_mode) ? EntryKind::link : EntryKind::other;
}

}  // namespace platform
