// Opens the folder of a file with the rights of the user who controls that folder.
//
// - For a super-user's process. A user who controls a folder can replace a file in it by a link to any other file.
// - Below the first folder of the path that belongs to another user, no symbolic link is followed: the folders are
// opened
//   one after another, each relative to the descriptor of its parent.
// - If the last folder belongs to another user, the calling thread has that user's rights on files (`FilesAsUser`)
// until
//   the end of the scope.
// - For a path whose folders all belong to the super-user, and for other processes, nothing changes: the file is
// reached
//   by its path.

#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>

#include "platform/UniqueFd.h"
#include "platform/Users.h"

namespace platform {

class OwnersFolder {
 public:
  // `path` is the path of the file, which need not exist.
  explicit OwnersFolder(const std::string& path);

  // Returns false if the folder cannot be opened or the rights cannot be taken.
  explicit operator bool() const { return usable_; }

  // The folder and the name for functions such as `openat`.
  int get() const { return folder_ ? folder_.get() : AT_FDCWD; }
  std::string name() const { return sibling(fileName_); }
  const std::string& fileName() const { return fileName_; }

  // Returns the name of another file in the folder.
  std::string sibling(const std::string& fileName) const { return prefix_ + fileName; }

  // Returns whether another user may have created the file or replaced it by a link. It must be opened with
  // `openFlags` and examined with `statFlags`.
  bool isForeign() const { return foreign_; }
  int openFlags() const { return foreign_ ? O_NOFOLLOW : 0; }
  int statFlags() const { return foreign_ ? AT_SYMLINK_NOFOLLOW : 0; }

  // Returns whether a file of this owner may be used in the folder: a user cannot move the file of a third user there.
  bool mayOwn(uid_t owner) const { return owner == 0 || owner == owner_ || owner_ == 0; }

 private:
  // Opens the folder `path` up to `end`, and the folders after it.
  bool walk(const std::string& path, std::size_t end, int flags);

  std::string prefix_;  // of names relative to `get()`
  std::string fileName_;
  UniqueFd folder_;
  std::optional<FilesAsUser> rights_;
  uid_t owner_ = 0;
  bool foreign_ = false;
  bool usable_ = true;
};

}  // namespace platform
