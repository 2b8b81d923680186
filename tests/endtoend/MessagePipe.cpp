#include "tests/endtoend/MessagePipe.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <system_error>

namespace endtoend {

MessagePipe::MessagePipe(const std::filesystem::path& path) : path_(path) {
  if (mkfifo(path.c_str(), 0600) != 0) throw std::system_error(errno, std::generic_category(), path.string());
  fd_ = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), path.string());
  const auto readAll = [](gint, GIOCondition, gpointer self) -> gboolean {
    static_cast<MessagePipe*>(self)->text();
    return G_SOURCE_CONTINUE;
  };
  source_ = g_unix_fd_add(fd_, G_IO_IN, readAll, this);
}

MessagePipe::~MessagePipe() {
  g_source_remove(source_);
  close(fd_);
  unlink(path_.c_str());
}

const std::string& MessagePipe::text() {
  char block[4096];
  for (ssize_t count = 0; (count = read(fd_, block, sizeof block)) > 0;) {
    text_.append(block, static_cast<std::size_t>(count));
  }
  return text_;
}

}  // namespace endtoend
