#include "app/gtk/keys/Answers.h"

#include <string.h>
#include <unistd.h>

#include <thread>

#include "app/gtk/keys/Device.h"

namespace {

constexpr std::chrono::milliseconds kTimeToEnd{300};
constexpr std::size_t kMaxRequest = 4 << 20;

// Without a buffer, in which a PIN could remain.
bool readByte(char& to) {
  return ::read(STDIN_FILENO, &to, 1) == 1;
}

}  // namespace

Answer::~Answer() {
  clear();
}

void Answer::clear() {
  explicit_bzero(text_.data(), text_.size());
}

std::string Answers::readRequest() {
  std::string line;
  char each = 0;
  while (line.size() < kMaxRequest && readByte(each) && each != '\n')
    line += each;
  return line;
}

Answers::Answers() {
  std::thread([this] { read(); }).detach();
}

bool Answers::wait(std::chrono::milliseconds time, Answer& to) {
  std::unique_lock<std::mutex> guard(lock_);
  if (!arrived_.wait_for(guard, time, [this] { return hasNext_; })) return false;
  to.text_ = next_.text_;
  next_.clear();
  hasNext_ = false;
  return true;
}

void Answers::read() {
  Answer line;
  std::size_t size = 0;
  char each = 0;
  while (readByte(each)) {
    if (each != '\n') {
      if (size < kMaxKeyPin) line.text_[size++] = each;
      continue;
    }
    each = 0;
    const std::lock_guard<std::mutex> guard(lock_);
    next_.text_ = line.text_;
    hasNext_ = true;
    line.clear();
    size = 0;
    arrived_.notify_one();
  }
  // A key that hangs does not keep the process from ending.
  std::thread(cancelOpenDevicesAndExit).detach();
  std::this_thread::sleep_for(kTimeToEnd);
  _exit(0);
}
