// Interrupts whatever this process does, thousands of times a second, for the length of a scope.

#pragma once

#include <signal.h>
#include <sys/time.h>

namespace support {

class Interruptions {
 public:
  Interruptions() {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // system calls are not taken up again: SA_RESTART is missing
    ::sigaction(SIGALRM, &action, &former_);
    const itimerval often{{0, 100}, {0, 100}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions() {
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &former_, nullptr);
  }

 private:
  struct sigaction former_ {};
};

}  // namespace support
