#include "platform/OwnersFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>

#include "platform/Path.h"

namespace platform {
namespace {

// The first part of a path that belongs to another user.
struct ForeignPart {
  std::size_t end;  // npos: the file itself
  bool isLink;      // the user may have created it as a link
};

std::optional<ForeignPart> foreignPartOf(const std::string& path) {
  std::size_t end = 0;
  while (end != std::string::npos) {
    end = path.find('/', path.find_first_not_of('/', end));
    const std::string part = path.substr(0, end);
    struct stat object {};
    struct stat target {};
    if (::lstat(part.c_str(), &object) != 0) return std::nullopt;
    if (isOtherUser(object.st_uid)) return ForeignPart{end, true};
    if (end != std::string::npos && ::stat(part.c_str(), &target) == 0 && isOtherUser(target.st_uid))
      return ForeignPart{end, false};
  }
  return std::nullopt;
}

}  // namespace

OwnersFolder::OwnersFolder(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  fileName_ = path.substr(slash + 1);  // npos + 1 is 0
  prefix_ = path.substr(0, slash + 1);
  if (::geteuid() != 0) return;

  const std::string trimmed = withoutTrailingSlashes(path);
  const std::optional<ForeignPart> foreign = foreignPartOf(trimmed);
  if (!foreign) return;
  foreign_ = true;
  if (foreign->end != std::string::npos) usable_ = walk(trimmed, foreign->end, foreign->isLink ? O_NOFOLLOW : 0);
}

bool OwnersFolder::walk(const std::string& path, std::size_t end, int flags) {
  constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  prefix_.clear();
  fileName_ = path.substr(path.rfind('/') + 1);
  folder_.reset(::open(path.substr(0, end).c_str(), kFolder | flags));
  while (folder_) {
    const std::size_t start = path.find_first_not_of('/', end);
    end = path.find('/', start);
    if (end == std::string::npos) break;
    folder_.reset(::openat(folder_.get(), path.substr(start, end - start).c_str(), kFolder | O_NOFOLLOW));
  }

  struct stat folder {};
  if (!folder_ || ::fstat(folder_.get(), &folder) != 0) return false;
  if (!isOtherUser(folder.st_uid)) return true;
  owner_ = folder.st_uid;
  rights_.emplace(owner_);
  return static_cast<bool>(*rights_);
}

}  // namespace platform
