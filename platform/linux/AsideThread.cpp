#include "platform/linux/AsideThread.h"

#include <signal.h>

#include <system_error>
#include <thread>

namespace platform {
namespace {

class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

 private:
  sigset_t former_;
};

}  // namespace

bool doAside(const std::function<void()>& work) {
  const SignalsBlocked duringTheStart;
  try {
    std::thread(work).detach();
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

}  // namespace platform
