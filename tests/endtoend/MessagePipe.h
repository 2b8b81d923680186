// The pipe that the sign-in window writes its message into, held open by the test from before the window's start.

#pragma once

#include <glib.h>

#include <filesystem>
#include <string>

namespace endtoend {

class MessagePipe {
 public:
  // Makes the FIFO `path`. Throws std::system_error when it cannot.
  explicit MessagePipe(const std::filesystem::path& path);
  ~MessagePipe();

  MessagePipe(const MessagePipe&) = delete;
  MessagePipe& operator=(const MessagePipe&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // Everything that has been written into the pipe so far.
  const std::string& text();

 private:
  std::filesystem::path path_;
  int fd_ = -1;
  guint source_ = 0;
  std::string text_;
};

}  // namespace endtoend
