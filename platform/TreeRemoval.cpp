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

class Removal : public TreeVisitor {
 public:
  // Removing before entering keeps the contents of a folder that cannot be removed, for example a mount point.
  bool enter(const TreeEntry& entry) override {
    const int error = remove(entry);
    if (error == ENOTEMPTY || error == EEXIST) return true;
    if (error != 0) note(entry, error);
    return false;
  }

  void onError(const TreeEntry& entry, int error) override { note(entry, error); }
  void leave(const TreeEntry& entry) override {
    if (const int error = remove(entry)) note(entry, error);
  }

  const Failure& first() const { return first_; }

 private:
  // Returns 0 or the `errno` value.
  static int remove(const TreeEntry& entry) {
    int result = 0;
    do
      result = ::unlinkat(entry.folder, entry.name, entry.kind == EntryKind::kFolder ? AT_REMOVEDIR : 0);
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
  }

  void note(const TreeEntry& entry, int error) {
    if (!first_ && error != ENOENT) first_ = errorWithPath(error, entry.path);
  }

  Failure first_;
};

Failure failureAt(const std::string& path) {
  return errorWithPath(errno, untilNul(path));
}

}  // namespace

Failure removeTree(const std::string& path) {
  // With its slash, "link/" would be the folder that the link refers to.
  const std::string root = withoutTrailingSlashes(untilNul(path));
  const std::string name = lastPathComponent(root);
  if (name.empty() || name == "." || name == "..") return errorWithPath(EINVAL, untilNul(path));
  if (!exists(root)) return failureAt(path);

  Removal removal;
  walkTree(root, removal, Mounts::kEnter);
  return removal.first();
}

Failure removeObject(const std::string& path) {
  if (std::remove(path.c_str()) == 0) return std::nullopt;
  return failureAt(path);
}

}  // namespace platform
