#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/Text.h"
#include "platform/UniqueFd.h"
#include "platform/WriteAll.h"

namespace platform {
namespace {

// In the same folder, so that it can be renamed; the name is short enough for any.
std::string pathBeside(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return path.substr(0, slash == std::string::npos ? 0 : slash + 1) + "." + randomUuidText();
}

// A file that is removed unless it has been given its name.
class Draft {
 public:
  Draft(std::string path, mode_t mode)
      : path_(std::move(path)), file_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode)) {}
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;
  ~Draft() {
    if (file_) (void)::unlink(path_.c_str());  // there is nothing better to do with it
  }

  explicit operator bool() const { return static_cast<bool>(file_); }
  int get() const { return file_.get(); }

  bool rename(const std::string& path) {
    if (std::rename(path_.c_str(), path.c_str()) != 0) return false;
    file_.reset();
    return true;
  }

 private:
  std::string path_;
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
  const bool replaces = ::lstat(path.c_str(), &former) == 0 && S_ISREG(former.st_mode);
  const mode_t permissions = former.st_mode & 0777;

  // What only the owner may read is not shown to others meanwhile.
  Draft draft(pathBeside(path), replaces ? 0600 : 0666);
  if (!draft) return false;
  if (replaces && !resemble(draft.get(), former, permissions)) return false;
  return writeAll(draft.get(), bytes) && bringToDisk(draft.get()) && draft.rename(path);
}

}  // namespace platform
