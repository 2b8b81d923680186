#include "platform/FileTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/UniqueFd.h"

namespace platform {
namespace {

bool isDots(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

EntryKind kindAt(int folder, const char* name) {
  struct stat object {};
  if (::fstatat(folder, name, &object, AT_SYMLINK_NOFOLLOW) != 0) return EntryKind::kOther;
  if (S_ISDIR(object.st_mode)) return EntryKind::kFolder;
  return S_ISLNK(object.st_mode) ? EntryKind::kLink : EntryKind::kOther;
}

EntryKind kindOf(int folder, const dirent& entry) {
  switch (entry.d_type) {
    case DT_UNKNOWN:
      return kindAt(folder, entry.d_name);
    case DT_DIR:
      return EntryKind::kFolder;
    case DT_LNK:
      return EntryKind::kLink;
    default:
      return EntryKind::kOther;
  }
}

struct CloseFolder {
  void operator()(DIR* folder) const { (void)::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

// Returns 0, or the `errno` value that ended the reading early.
int readEntries(DIR* folder, std::vector<FolderEntry>& entries) {
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(folder);
    if (entry == nullptr && errno == EINTR) continue;
    if (entry == nullptr) return errno;
    if (!isDots(entry->d_name)) entries.push_back({entry->d_name, kindOf(::dirfd(folder), *entry)});
  }
}

class Walk {
 public:
  Walk(const std::string& root, TreeVisitor& visitor, Mounts mounts)
      : path_(untilNul(root)), rootLength_(path_.size()), visitor_(visitor), mounts_(mounts) {}

  void run() {
    visit(entry(AT_FDCWD, 0, kindAt(AT_FDCWD, path_.c_str())));
    while (!levels_.empty()) {
      if (levels_.back().next < levels_.back().entries.size())
        visitNext();
      else
        leaveTop();
    }
  }

 private:
  // A folder between the root and the current entry.
  struct Level {
    UniqueFd fd;             // open for the innermost levels only, always for the last one
    struct stat object;      // identifies the folder when it is opened again
    std::size_t nameAt;      // of the folder's name in `path_`
    std::size_t pathLength;  // of the folder
    std::vector<FolderEntry> entries{};
    std::size_t next = 0;
  };

  static constexpr std::size_t kMaxOpen = 16;

  TreeEntry entry(int folder, std::size_t nameAt, EntryKind kind) const {
    std::string_view relative = std::string_view(path_).substr(rootLength_);
    if (!relative.empty() && relative.front() == '/') relative.remove_prefix(1);
    return {folder, path_.c_str() + nameAt, kind, path_, relative};
  }

  void visitNext() {
    Level& top = levels_.back();
    const FolderEntry& next = top.entries[top.next++];
    path_.resize(top.pathLength);
    if (path_.back() != '/') path_ += '/';
    const std::size_t nameAt = path_.size();
    path_ += next.name;
    visit(entry(top.fd.get(), nameAt, next.kind));
  }

  void visit(const TreeEntry& entry) {
    if (!visitor_.enter(entry)) return;
    Level level{
        openFolder(entry.folder, entry.name), {}, static_cast<std::size_t>(entry.name - path_.c_str()), path_.size()};
    const bool isOpen = level.fd && ::fstat(level.fd.get(), &level.object) == 0;
    if (!isOpen) visitor_.onError(entry, errno);
    if (!isOpen || isSkipped(level)) return visitor_.leave(entry);
    levels_.push_back(std::move(level));
    if (levels_.size() - firstOpen_ > kMaxOpen) closeOutermost();
    if (const int error = readTop()) visitor_.onError(entry, error);
  }

  bool isSkipped(const Level& level) const {
    return mounts_ == Mounts::kSkip && !levels_.empty() && level.object.st_dev != levels_.front().object.st_dev;
  }

  // Reads through a copy of the descriptor, because `closedir` closes it.
  int readTop() {
    UniqueFd copy;
    do
      copy.reset(::fcntl(levels_.back().fd.get(), F_DUPFD_CLOEXEC, 0));
    while (!copy && needsDescriptor(errno) && closeOutermost());
    if (!copy) return errno;
    const Folder folder(::fdopendir(copy.get()));
    if (!folder) return errno;
    (void)copy.release();
    return readEntries(folder.get(), levels_.back().entries);
  }

  void leaveTop() {
    Level done = std::move(levels_.back());
    levels_.pop_back();
    path_.resize(done.pathLength);
    if (!levels_.empty() && !levels_.back().fd && !reopenTop(done.fd.get())) {
      levels_.clear();
      return visitor_.onError(entry(AT_FDCWD, 0, EntryKind::kFolder), ESTALE);
    }
    done.fd.reset();  // some file systems are slow to remove a folder that is open
    visitor_.leave(entry(levels_.empty() ? AT_FDCWD : levels_.back().fd.get(), done.nameAt, EntryKind::kFolder));
  }

  bool reopenTop(int child) {
    UniqueFd parent = openFolder(child, "..");
    struct stat object {};
    // If the child was moved, ".." is a folder outside the tree.
    if (!parent || ::fstat(parent.get(), &object) != 0 || !isSame(object, levels_.back().object)) return false;
    levels_.back().fd = std::move(parent);
    firstOpen_ = levels_.size() - 1;
    return true;
  }

  UniqueFd openFolder(int folder, const char* name) {
    for (;;) {
      UniqueFd fd(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      if (fd || (errno != EINTR && !(needsDescriptor(errno) && closeOutermost()))) return fd;
    }
  }

  static bool needsDescriptor(int error) { return error == EMFILE || error == ENFILE; }

  // Returns false if only the last level is open.
  bool closeOutermost() {
    if (firstOpen_ + 1 >= levels_.size()) return false;
    levels_[firstOpen_++].fd.reset();
    return true;
  }

  std::string path_;  // of the current entry
  std::size_t rootLength_;
  TreeVisitor& visitor_;
  Mounts mounts_;
  std::vector<Level> levels_;
  std::size_t firstOpen_ = 0;  // the levels before it are closed
};

}  // namespace

void walkTree(const std::string& root, TreeVisitor& visitor, Mounts mounts) {
  Walk(root, visitor, mounts).run();
}

std::vector<FolderEntry> entriesOf(const std::string& folder) {
  std::vector<FolderEntry> entries;
  const Folder open(::opendir(folder.c_str()));
  if (open) (void)readEntries(open.get(), entries);
  return entries;
}

}  // namespace platform
