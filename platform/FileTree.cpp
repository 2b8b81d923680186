#include "platform/FileTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "platform/Path.h"
#include "platform/UniqueFd.h"

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

// The entries of an open folder, all read at once into little room.
class FolderListing {
 public:
  // Reads what `folder` still has to tell, without "." and ".."; the stream stays the caller's. Returns 0, or the
  // `errno` value that ended the reading early.
  int read(DIR* folder);

  std::size_t size() const { return items_.size(); }
  const char* name(std::size_t i) const { return names_.data() + items_[i].name; }
  EntryKind kind(std::size_t i) const { return items_[i].kind; }

 private:
  struct Item {
    std::size_t name;  // where it begins in `names_`
    EntryKind kind;
  };

  std::string names_;  // each with its terminator
  std::vector<Item> items_;
};

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

// Which folder it is, whatever it is called.
struct Identity {
  dev_t device;
  ino_t number;

  bool operator==(const Identity& other) const { return device == other.device && number == other.number; }
};

std::optional<Identity> identityOf(int fd) {
  struct stat object {};
  if (::fstat(fd, &object) != 0) return std::nullopt;
  return Identity{object.st_dev, object.st_ino};
}

struct CloseFolder {
  void operator()(DIR* folder) const { (void)::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

// The folders from the first entry down to the one that is being read.
class Walk {
 public:
  Walk(const std::string& root, TreeVisitor& visitor, Mounts mounts)
      : path_(untilNul(root)), rootLength_(path_.size()), visitor_(visitor), mounts_(mounts) {}

  void run() {
    meet(entry(AT_FDCWD, 0, kindAt(AT_FDCWD, path_.c_str())));
    while (!levels_.empty())
      goOn();
  }

 private:
  struct Level {
    UniqueFd fd;                       // none while it is let go
    std::optional<Identity> identity;  // known as soon as it has been let go
    std::size_t nameAt;                // where its name stands in the path of what is in it
    std::size_t pathLength;
    FolderListing entries{};
    std::size_t next = 0;
  };

  static constexpr std::size_t mostOpen = 16;

  TreeEntry entry(int folder, std::size_t nameAt, EntryKind kind) const {
    std::string_view relative = std::string_view(path_).substr(rootLength_);
    if (!relative.empty() && relative.front() == '/') relative.remove_prefix(1);
    return {folder, path_.c_str() + nameAt, kind, path_, relative};
  }

  void goOn() {
    Level& top = levels_.back();
    if (top.next == top.entries.size()) return ascend();
    const std::size_t i = top.next++;
    path_.resize(top.pathLength);
    if (path_.back() != '/') path_ += '/';
    const std::size_t nameAt = path_.size();
    path_ += top.entries.name(i);
    meet(entry(top.fd.get(), nameAt, top.entries.kind(i)));
  }

  void meet(const TreeEntry& met) {
    if (!visitor_.enter(met)) return;
    UniqueFd fd = openFolder(met.folder, met.name);
    if (!fd) visitor_.miss(met, errno);
    if (!fd || !mayRead(fd.get())) return visitor_.leave(met);
    levels_.push_back({std::move(fd), std::nullopt, static_cast<std::size_t>(met.name - path_.c_str()), path_.size()});
    if (levels_.size() - firstOpen_ >= mostOpen) letGoOfOne();
    const int error = readTop();
    if (error != 0) visitor_.miss(met, error);
  }

  bool mayRead(int fd) {
    if (mounts_ == Mounts::entered) return true;
    const std::optional<Identity> folder = identityOf(fd);
    if (folder && levels_.empty()) device_ = folder->device;
    return folder && folder->device == device_;
  }

  int readTop() {
    UniqueFd copy;
    do
      copy.reset(::fcntl(levels_.back().fd.get(), F_DUPFD_CLOEXEC, 0));
    while (!copy && noneIsFree(errno) && letGoOfOne());
    if (!copy) return errno;
    const Folder folder(::fdopendir(copy.get()));
    if (!folder) return errno;
    (void)copy.release();  // the stream closes it
    return levels_.back().entries.read(folder.get());
  }

  // Back to the folder above, to leave the one that has been read.
  void ascend() {
    Level done = std::move(levels_.back());
    levels_.pop_back();
    firstOpen_ = std::min(firstOpen_, std::max<std::size_t>(levels_.size(), 1));
    if (!levels_.empty() && !levels_.back().fd && !reopenFrom(done.fd.get())) {
      if (std::optional<Level> lost = reopenFromTheRoot()) done = std::move(*lost);
    }
    done.fd.reset();  // some file systems are slow to let go of a folder that is removed while it is open
    path_.resize(done.pathLength);
    visitor_.leave(entry(levels_.empty() ? AT_FDCWD : levels_.back().fd.get(), done.nameAt, EntryKind::folder));
  }

  bool reopenFrom(int child) {
    UniqueFd parent = openFolder(child, "..");
    if (!parent || !(identityOf(parent.get()) == levels_.back().identity)) return false;
    keepTop(std::move(parent));
    return true;
  }

  // When somebody has moved a folder away below which the walk stood: goes down again as far as the folders are those
  // it came through. Answers the first one that is not, which is then left as if it had been read.
  std::optional<Level> reopenFromTheRoot() {
    UniqueFd reached;
    std::size_t depth = 1;
    for (; depth < levels_.size(); ++depth) {
      const Level& level = levels_[depth];
      const std::string name = path_.substr(level.nameAt, level.pathLength - level.nameAt);
      UniqueFd fd = openFolder(depth == 1 ? levels_[0].fd.get() : reached.get(), name.c_str());
      if (!fd || !(identityOf(fd.get()) == level.identity)) break;
      reached = std::move(fd);
    }
    std::optional<Level> lost;
    if (depth < levels_.size()) lost = std::move(levels_[depth]);
    levels_.resize(depth);
    firstOpen_ = depth;
    if (depth > 1) keepTop(std::move(reached));
    return lost;
  }

  void keepTop(UniqueFd fd) {
    levels_.back().fd = std::move(fd);
    firstOpen_ = levels_.size() - 1;
  }

  UniqueFd openFolder(int folder, const char* name) {
    for (;;) {
      UniqueFd fd(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      if (fd || (errno != EINTR && !(noneIsFree(errno) && letGoOfOne()))) return fd;
    }
  }

  static bool noneIsFree(int error) { return error == EMFILE || error == ENFILE; }

  // Closes the outermost open folder but the first one of all, and never the one that is being read.
  bool letGoOfOne() {
    if (firstOpen_ + 1 >= levels_.size()) return false;
    Level& level = levels_[firstOpen_];
    level.identity = identityOf(level.fd.get());
    level.fd.reset();
    ++firstOpen_;
    return true;
  }

  std::string path_;
  std::size_t rootLength_;
  TreeVisitor& visitor_;
  Mounts mounts_;
  dev_t device_ = 0;
  std::vector<Level> levels_;
  std::size_t firstOpen_ = 1;  // the first level is always open; then none is, up to this one
};

}  // namespace

EntryKind kindAt(int folder, const char* name) {
  struct stat object {};
  if (::fstatat(folder, name, &object, AT_SYMLINK_NOFOLLOW) != 0) return EntryKind::other;
  if (S_ISDIR(object.st_mode)) return EntryKind::folder;
  return S_ISLNK(object.st_mode) ? EntryKind::link : EntryKind::other;
}

void walkTree(const std::string& root, TreeVisitor& visitor, Mounts mounts) {
  Walk(root, visitor, mounts).run();
}

std::vector<FolderEntry> entriesOf(const std::string& folder) {
  const Folder open(::opendir(folder.c_str()));
  if (!open) return {};
  FolderListing listing;
  (void)listing.read(open.get());  // what was read is what there is to tell
  std::vector<FolderEntry> entries;
  for (std::size_t i = 0; i < listing.size(); ++i)
    entries.push_back({listing.name(i), listing.kind(i)});
  return entries;
}

}  // namespace platform
