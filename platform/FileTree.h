// Walks folders with everything in them.
//
// A path ends at its first NUL.
// A walk never follows a symbolic link, not even when another process puts one in the place of a folder in mid-walk: it
// goes from folder to folder by open descriptors. It keeps few of them open, so that neither the limit on descriptors
// nor that on the length of a path limits its depth. Names are bytes. Thread-safe; what others change meanwhile may or
// may not be met.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class EntryKind { folder, link, other };

// What is at a name in an open folder; a symbolic link counts as itself, nothing as `other`.
EntryKind kindAt(int folder, const char* name);

struct TreeEntry {
  int folder;                 // open on what holds it, or AT_FDCWD
  const char* name;           // in `folder`; of the first entry the path as given
  EntryKind kind;             // when it was seen in its folder
  const std::string& path;    // the first entry's as given, and the names on the way, parted by "/"
  std::string_view relative;  // `path` without the first entry's; "" for that one
};

class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;

  // Every entry comes once, before what is in it. True asks to go into it.
  virtual bool enter(const TreeEntry& entry) = 0;

  // An entry that was to be gone into cannot be opened or read as a folder; `error` is the `errno` value.
  virtual void miss(const TreeEntry& /*entry*/, int /*error*/) {}

  // Every entry that was to be gone into comes again after what is in it, if anything was found.
  virtual void leave(const TreeEntry& /*entry*/) {}
};

enum class Mounts { entered, passedOver };

// Lets `visitor` see what is at `root` and all that is under it, entries in the order of their folder. A `root` at
// which nothing is counts as an entry too; one that ends in "/" may be a symbolic link to the folder. With
// `Mounts::passedOver` folders of other file systems than `root`'s are entries, but not gone into.
void walkTree(const std::string& root, TreeVisitor& visitor, Mounts mounts);

struct FolderEntry {
  std::string name;
  EntryKind kind;
};

// What is in a folder, or in the one that a symbolic link leads to, in the folder's order and without "." and "..".
// Nothing when it cannot be read.
std::vector<FolderEntry> entriesOf(const std::string& folder);

}  // namespace platform
