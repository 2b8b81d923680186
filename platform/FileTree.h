// Walks folder trees.
//
// - A path ends at its first NUL. Names are bytes.
// - A walk follows no symbolic link, not even one that replaces a folder during the walk: every folder is opened
//   relative to the open descriptor of its parent.
// - Neither the length of paths nor the number of free descriptors limits the depth: a walk needs three descriptors and
//   keeps at most 16 open.
// - Thread-safe. Changes by other processes during a walk may or may not be seen.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// A symbolic link is not followed.
enum class EntryKind { kFolder, kLink, kOther };

struct TreeEntry {
  int folder;                 // descriptor of the parent, or AT_FDCWD
  const char* name;           // relative to `folder`; the path of the root as given
  EntryKind kind;             // when the parent was read; `kOther` for a missing root
  const std::string& path;    // the path of the root as given, and the names below it
  std::string_view relative;  // the part of `path` below the root; "" for the root
};

class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;

  // Called once for every entry, before its contents. Returns whether to open the entry as a folder.
  virtual bool enter(const TreeEntry& entry) = 0;

  // The folder cannot be opened or read; `error` is the `errno` value. ESTALE: the folder was moved during the walk, so
  // that its parent cannot be reached again. The walk has then ended.
  virtual void onError(const TreeEntry& /*entry*/, int /*error*/) {}

  // Called after the contents for every entry for which `enter` returned true, also after `onError` unless the walk has
  // ended.
  virtual void leave(const TreeEntry& /*entry*/) {}
};

enum class Mounts { kEnter, kSkip };

// Visits `root` and everything below it, entries in the order in which the file system lists them.
//
// - A missing `root` is visited as an entry.
// - A `root` that ends in "/" may be a symbolic link to a folder.
// - With `Mounts::kSkip`, folders on other file systems than `root` are visited but not opened.
void walkTree(const std::string& root, TreeVisitor& visitor, Mounts mounts);

struct FolderEntry {
  std::string name;
  EntryKind kind;
};

// The entries of a folder or of the folder that a symbolic link refers to, without "." and "..", in the order in which
// the file system lists them. Empty if the folder cannot be read.
std::vector<FolderEntry> entriesOf(const std::string& folder);

}  // namespace platform
