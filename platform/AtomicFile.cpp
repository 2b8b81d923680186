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

// The folder that a path lies in, and how what is in it is called from there.
class Place {
 public:
  explicit Place(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    name_ = slash == std::string::npos ? path : path.substr(slash + 1);
    before_ = path.substr(0, path.size() - name_.size());
    const char* const folder = before_.empty() ? "." : before_.c_str();
    folder_.reset(::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // From an open folder even a path that leaves no room for a longer name can be reached. One that may be searched
    // but not read cannot be opened.
    if (folder_) before_.clear();
  }

  int folder() const { return folder_ ? folder_.get() : AT_FDCWD; }
  std::string itself() const { return before_ + name_; }
  std::string beside(const std::string& name) const { return before_ + name; }

 private:
  std::string name_;
  std::string before_;
  UniqueFd folder_;
};

// A file in the same folder, so that it can be renamed, which is removed unless it has been given its name. The first
// one is short enough for any folder.
class Draft {
 public:
  Draft(const Place& place, mode_t mode)
      : place_(place),
        name_(place.beside("." + randomUuidText())),
        file_(::openat(place.folder(), name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode)) {}
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;
  ~Draft() {
    if (file_) (void)::unlinkat(place_.folder(), name_.c_str(), 0);  // there is nothing better to do with it
  }

  explicit operator bool() const { return static_cast<bool>(file_); }
  int get() const { return file_.get(); }

  bool takeThePlace() {
    if (::renameat(place_.folder(), name_.c_str(), place_.folder(), place_.itself().c_str()) != 0) return false;
    file_.reset();
    return true;
  }

 private:
  const Place& place_;
  std::string name_;
  UniqueFd file_;
};

bool bringToDisk(int fd) {
  while (::fsync(fd) != 0) {
    if (errno == EINVAL) return true;  // files of this kind are not kept on a disk
    if (errno != EINTR) return false;
  }
  return true;
}

// Changing the owner takes away more of the mode than is meant, so the mode comes last.
bool resemble(int fd, const struct stat& model, mode_t permissions) {
  (void)::fchown(fd, model.st_uid, model.st_gid);  // the super-user may; others own what they make
  return ::fchmod(fd, permissions) == 0;
}

}  // namespace

bool writeFileAtomically(const std::string& path, std::string_view bytes) {
  struct stat former {};
  const bool exists = ::lstat(path.c_str(), &former) == 0;
  if (!exists && errno != ENOENT) return false;
  const bool replaces = exists && S_ISREG(former.st_mode);
  const mode_t permissions = former.st_mode & 0777;

  // What only the owner may read is not shown to others meanwhile.
  const Place place(untilNul(path));
  Draft draft(place, replaces ? 0600 : 0666);
  if (!draft) return false;
  if (replaces && !resemble(draft.get(), former, permissions)) return false;
  return writeAll(draft.get(), bytes) && bringToDisk(draft.get()) && draft.takeThePlace();
}

}  // namespace platform
