// Postpones the cancellation of the calling thread (`pthread_cancel`) for a scope.
//
// For code whose destructors close files: `close` is a cancellation point, and a cancellation inside a destructor ends
// the process.

#pragma once

#include <pthread.h>

namespace platform {

class CancellationScope {
 public:
  CancellationScope() { (void)::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_); }
  CancellationScope(const CancellationScope&) = delete;
  CancellationScope& operator=(const CancellationScope&) = delete;
  ~CancellationScope() { (void)::pthread_setcancelstate(previous_, nullptr); }

 private:
  int previous_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace platform
