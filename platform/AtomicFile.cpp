#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "platform/Path.h"
#include "platform/Text.h"
#include "platform/UniqueFd.h"

namespace platform {
namespace {

// The parent folder of a path, and paths relative to it.
class Parent {
 public:
  explicit Parent(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    name_ = slash == std::string::npos ? path : path.substr(slash + 1);
    prefix_ = path.substr(0, path.size() - name_.size());
    const char* const folder = prefix_.empty() ? "." : prefix_.c_str();
    folder_.reset(::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Relative to the open folder, the temporary name cannot exceed PATH_MAX. A folder that is searchable but not
    // readable cannot be opened.
    if (folder_) prefix_.clear();
  }

  int folder() const { return folder_ ? folder_.get() : AT_FDCWD; }
  std::string target() const { return prefix_ + name_; }
  std::string sibling(const std::string& name) const { return prefix_ + name; }

 private:
  std::string name_;
  std::string prefix_;
  UniqueFd folder_;
};

// A file in the folder of the target. Removed at the end of the scope unless it was renamed.
class TemporaryFile {
 public:
  TemporaryFile(const Parent& parent, mode_t mode)
      : parent_(parent),
        name_(parent.sibling("." + randomUuidText())),
        file_(::openat(parent.folder(), name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode)) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (file_) (void)::unlinkat(parent_.folder(), name_.c_str(), 0);
  }

  explicit operator bool() const { return static_cast<bool>(file_); }
  int get() const { return file_.get(); }

  bool renameToTarget() {
    if (::renameat(parent_.folder(), name_.c_str(), parent_.folder(), parent_.target().c_str()) != 0) return false;
    file_.reset();
    return true;
  }

 private:
  const Parent& parent_;
  std::string name_;
  UniqueFd file_;
};

bool flush(int fd) {
  while (flushToDisk(fd) != 0) {
    if (errno == EINVAL) return true;  // the file system has no disk
    if (errno != EINTR) return false;
  }
  return true;
}

// The mode is set last, because a change of the owner clears bits of it.
bool copyOwnerAndMode(int fd, const struct stat& model, mode_t permissions) {
  (void)::fchown(fd, model.st_uid, model.st_gid);  // fails for other users than the super-user
  return ::fchmod(fd, permissions) == 0;
}

}  // namespace

bool writeFileAtomically(const std::string& path, std::string_view bytes) {
  struct stat previous {};
  const bool exists = ::lstat(path.c_str(), &previous) == 0;
  if (!exists && errno != ENOENT) return false;
  const bool replaces = exists && S_ISREG(previous.st_mode);
  const mode_t permissions = previous.st_mode & 0777;

  // The bytes must not be readable by other users before the permissions are copied.
  const Parent parent(untilNul(path));
  TemporaryFile file(parent, replaces ? 0600 : 0666);
  if (!file) return false;
  if (replaces && !copyOwnerAndMode(file.get(), previous, permissions)) return false;
  return writeAll(file.get(), bytes) && flush(file.get()) && file.renameToTarget();
}

}  // namespace platform
