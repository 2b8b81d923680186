// Reads standard input: the request, then the answers of the user. Ends the process when the input ends.
//
// - An answer may be a PIN: its copies here are overwritten.
// - An answer is only used for the question whose number it has: a PIN for a key that has been pulled out never reaches
//   another key.

#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>

#include "app/gtk/keys/Protocol.h"

// A text with a terminating NUL; overwritten at the end of its life.
class Answer {
 public:
  Answer() = default;
  ~Answer();
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;

  const char* text() const { return text_.data(); }
  bool isEmpty() const { return text_.front() == '\0'; }
  void clear();

 private:
  friend class Answers;
  std::array<char, kMaxKeyPin + 1> text_{};
  std::size_t size_ = 0;
};

class Answers {
 public:
  // The first line. Call once, before the others.
  static std::string readRequest();

  // Reads the answers in a thread of its own from now on. When the input ends, the open keys stop waiting, and the
  // process ends within 0.3 seconds.
  Answers();

  Answers(const Answers&) = delete;
  Answers& operator=(const Answers&) = delete;

  // Returns the number of a new question. Answers to earlier ones are dropped.
  unsigned ask();

  // Waits for the answer to the last question. Returns false after `time`.
  bool wait(std::chrono::milliseconds time, Answer& to);

 private:
  void read();
  static bool readAnswer(unsigned& question, Answer& to);

  std::mutex lock_;
  std::condition_variable arrived_;
  unsigned asked_ = 0;
  unsigned answered_ = 0;  // `answer_` is for this question
  Answer answer_;
};
