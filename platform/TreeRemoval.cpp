#include "platform/TreeRemoval.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/Failure.h"
#include "platform/FileKind.h"
#include "platform/FileTree.h"
#include "platform/Path.h"

namespace platform {
namespace {

// 0, or the `errno` value. What is gone already counts as removed.
int remove(const TreeEntry& entry, int flags) {
  int result = 0;
  do
    result = ::unlinkat(entry.folder, entry.name, flags);
  while (result != 0 && errno == EINTR);
  return result == 0 || errno == ENOENT ? 0 : errno;
}

// Linux has an error of its own for removing a folder as if it were none; POSIX and macOS have the one for everything
// forbidden.
bool isFolderNow(const TreeEntry& entry, int error) {
  return error == EISDIR || (error == EPERM && kindAt(entry.folder, entry.name) == EntryKind::folder);
}

bool isNotEmpty(int error) {
  return error == ENOTEMPTY || error == EEXIST;
}

class Removal : public TreeVisitor {
 public:
  // A folder is gone into when only its contents keep it: that passes over mount points too, which are busy.
  bool enter(const TreeEntry& entry) override {
    const int error = remove(entry, entry.kind == EntryKind::folder ? AT_REMOVEDIR : 0);
    if (error == 0 || isNotEmpty(error)) return error != 0;
    // Another process may have put a folder there since, or something else in the place of a folder.
    if (entry.kind != EntryKind::folder && isFolderNow(entry, error)) return true;
    if (error == ENOTDIR && remove(entry, 0) == 0) return false;
    note(entry, error);
    return false;
  }

  void miss(const TreeEntry& entry, int error) override {
    const bool isNoFolderNow = error == ENOENT || error == ENOTDIR || error == ELOOP;
    if (!isNoFolderNow) note(entry, error);
  }

  void leave(const TreeEntry& entry) override {
    int error = remove(entry, AT_REMOVEDIR);
    if (error == ENOTDIR) error = remove(entry, 0);
    if (error != 0) note(entry, error);
  }

  const Failure& first() const { return first_; }

 private:
  void note(const TreeEntry& entry, int error) {
    if (!first_) first_ = describedError(error, entry.path);
  }

  Failure first_;
};

Failure failureAt(const std::string& path) {
  return describedError(errno, untilNul(path));
}

}  // namespace

Failure removeTree(const std::string& path) {
  // With its slash "link/" would be the folder that the link leads to.
  const std::string root = withoutTrailingSlashes(untilNul(path));
  const std::string name = lastPathComponent(root);
  if (name.empty() || name == "." || name == "..") return describedError(EINVAL, untilNul(path));
  if (!exists(root)) return failureAt(path);

  Removal removal;
  walkTree(root, removal, Mounts::entered);
  return removal.first();
}

Failure removeObject(const std::string& path) {
  if (std::remove(path.c_str()) == 0) return std::nullopt;
  return failureAt(path);
}

}  // namespace platform
