// The pipe that the sign-in window writes its message into. The test opens it before the window starts.

#pragma once

#include <glib.h>

#include <filesystem>
#include <string>

namespace endtoend {

class MessagePipe {
 public:
  // Creates the FIFO `path`. Throws std::system_error on failure.
  explicit MessagePipe(const std::filesystem::path& path);
  ~MessagePipe();

  MessagePipe(const MessagePipe&) = delete;
  MessagePipe& operator=(const MessagePipe&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // Everything written into the pipe so far.
  const std::string& text();

 private:
  std::filesystem::path path_;
  int fd_ = -1;
  guint source_ = 0;
  std::string text_;
};

}  // namespace endtoend
