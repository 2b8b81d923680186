#include "examples/launcher/AnswerPipe.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace launcher {
namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// mkdtemp makes the folder with mode 0700: nobody else reaches what lies in it, whatever mode the window gives the
// pipe.
std::string makePrivateFolder() {
  const char* parent = std::getenv("TMPDIR");
  std::string folder = std::string(parent != nullptr && *parent != '\0' ? parent : "/tmp") + "/sign-in.XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) fail(folder);
  return folder;
}

}  // namespace

AnswerPipe::AnswerPipe() : folder_(makePrivateFolder()), path_(folder_ + "/answer") {
  if (mkfifo(path_.c_str(), 0600) != 0) fail(path_);

  // Open for writing too: with a reading end alone, select() would report the end of the file for ever once the window
  // has closed the pipe.
  fd_ = open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (fd_ < 0) fail(path_);
}

AnswerPipe::~AnswerPipe() {
  close(fd_);
  unlink(path_.c_str());
  rmdir(folder_.c_str());
}

std::string AnswerPipe::readWhatIsThere() {
  std::string all;
  char block[4096];
  while (true) {
    const ssize_t count = read(fd_, block, sizeof block);
    if (count > 0) {
      all.append(block, static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      return all;
    }
  }
}

}  // namespace launcher
