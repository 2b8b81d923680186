#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

int pthread_threadid_np(pthread_t, std::uint64_t* id) {
  *id = static_cast<std::uint64_t>(::syscall(SYS_gettid));
  return 0;
}
