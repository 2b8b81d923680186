// Runs pieces of a test in processes of their own.

#pragma once

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <thread>
#include <utility>

namespace support {

// A forked process that runs `body` and ends, with its answer as exit status. Killed, if need be, and waited for.
class Child {
 public:
  // How the process goes: through `exit`, so that static objects are destroyed, or at once.
  enum class Ending { orderly, abrupt };

  explicit Child(const std::function<int()>& body, Ending ending = Ending::abrupt) {
    std::fflush(nullptr);
    id_ = ::fork();
    if (id_ != 0) return;
    const int status = body();
    std::fflush(nullptr);
    if (ending == Ending::orderly) std::exit(status);
    ::_exit(status);
  }
  Child(Child&& other) noexcept : id_(std::exchange(other.id_, 0)) {}
  Child& operator=(Child&& other) noexcept {
    std::swap(id_, other.id_);
    return *this;
  }
  ~Child() {
    if (id_ <= 0) return;
    kill();
    wait();
  }

  pid_t id() const { return id_; }

  void send(int signal) const { ::kill(id_, signal); }
  void kill() const { send(SIGKILL); }

  // The exit status; 128 and the signal's number for a process that a signal ended.
  int wait() {
    int status = 0;
    while (::waitpid(id_, &status, 0) < 0 && errno == EINTR) {
    }
    id_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

 private:
  pid_t id_ = 0;
};

// Runs `body` in a process of its own, static objects and all; its answer is the exit status.
inline int inChild(const std::function<int()>& body) {
  return Child(body, Child::Ending::orderly).wait();
}

// An object that the process and its later children see alike.
template <typename T>
class Shared {
 public:
  Shared() : object_(new (::mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) T()) {}
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  ~Shared() { ::munmap(object_, sizeof(T)); }

  T& operator*() const { return *object_; }
  T* operator->() const { return object_; }

 private:
  T* object_;
};

// Whether a signal reaches a process that sleeps in a system call: the thread sanitizer holds it back until the call
// has ended.
#if defined(__SANITIZE_THREAD__)
constexpr bool signalsInterrupt = false;
#else
constexpr bool signalsInterrupt = true;
#endif

// Whether this process has a child, one that has ended and was not waited for included.
inline bool hasChildren() {
  siginfo_t ended{};
  return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0;
}

// Looks again and again until it is true; false when that has not come after half a minute.
inline bool comesTrue(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return true;
}

}  // namespace support
