// Sends SIGALRM to this process every 100 microseconds for a scope.

#pragma once

#include <signal.h>
#include <sys/time.h>

namespace support {

class Interruptions {
 public:
  Interruptions() {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // without SA_RESTART, so that system calls fail with EINTR
    ::sigaction(SIGALRM, &action, &previous_);
    const itimerval interval{{0, 100}, {0, 100}};
    ::setitimer(ITIMER_REAL, &interval, nullptr);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions() {
    const itimerval disabled{};
    ::setitimer(ITIMER_REAL, &disabled, nullptr);
    ::sigaction(SIGALRM, &previous_, nullptr);
  }

 private:
  struct sigaction previous_ {};
};

}  // namespace support
