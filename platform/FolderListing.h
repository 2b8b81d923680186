// The entries of an open folder, all read at once into little room.

#pragma once

#include <dirent.h>

#include <cstddef>
#include <string>
#include <vector>

#include "platform/FileTree.h"

namespace platform {

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

// What is at a name in an open folder; a symbolic link counts as itself, nothing as `other`.
EntryKind kindAt(int folder, const char* name);

}  // namespace platform
