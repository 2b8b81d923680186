// The pipe in which the sign-in window leaves its one message: a FIFO in a private folder, gone with this object.

#pragma once

#include <string>

namespace launcher {

class AnswerPipe {
 public:
  // Makes the FIFO and opens it. Throws std::system_error when that fails.
  AnswerPipe();
  ~AnswerPipe();

  AnswerPipe(const AnswerPipe&) = delete;
  AnswerPipe& operator=(const AnswerPipe&) = delete;

  const std::string& path() const { return path_; }
  int fd() const { return fd_; }

  // Takes everything that lies in the pipe; "" when it is empty. Never waits.
  std::string readWhatIsThere();

 private:
  std::string folder_;
  std::string path_;
  int fd_ = -1;
};

}  // namespace launcher
