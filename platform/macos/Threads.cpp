#include "platform/Threads.h"

#include <pthread.h>

namespace platform {

// The number that the system call `thread_selfid` gives, which is not to be made directly any more. The threads'
// library keeps it with each thread and asks for it anew after a fork.
std::uint64_t currentThreadId() {
  std::uint64_t id = 0;
  (void)::pthread_threadid_np(::pthread_self(), &id);  // a running thread has one
  return id;
}

}  // namespace platform
