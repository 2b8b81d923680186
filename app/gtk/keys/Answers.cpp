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
  size_ = 0;
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

unsigned Answers::ask() {
  const std::lock_guard<std::mutex> guard(lock_);
  answer_.clear();
  return ++asked_;
}

bool Answers::wait(std::chrono::milliseconds time, Answer& to) {
  std::unique_lock<std::mutex> guard(lock_);
  if (!arrived_.wait_for(guard, time, [this] { return answered_ == asked_; })) return false;
  to.text_ = answer_.text_;
  answer_.clear();
  return true;
}

// Returns false at the end of the input. What is longer than a PIN is dropped.
bool Answers::readAnswer(unsigned& question, Answer& to) {
  char each = 0;
  question = 0;
  while (readByte(each) && each >= '0' && each <= '9')
    question = question * 10 + static_cast<unsigned>(each - '0');
  if (each == '\n') return true;
  while (readByte(each)) {
    if (each == '\n') return true;
    if (to.size_ < kMaxKeyPin) to.text_[to.size_++] = each;
  }
  return false;
}

void Answers::read() {
  unsigned question = 0;
  for (Answer line; readAnswer(question, line); line.clear()) {
    const std::lock_guard<std::mutex> guard(lock_);
    if (question != asked_) continue;
    answer_.text_ = line.text_;
    answered_ = question;
    arrived_.notify_one();
  }
  // A key that hangs does not keep the process from ending.
  std::thread(cancelOpenDevicesAndExit).detach();
  std::this_thread::sleep_for(kTimeToEnd);
  _exit(0);
}
