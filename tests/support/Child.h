// Runs a function in a child process; waits for conditions.

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

// A forked process that runs `body`, whose result is its exit status. The destructor kills it and waits for it.
class Child {
 public:
  // `kOrderly` ends the process with `exit`, which destroys static objects; `kAbrupt` with `_exit`.
  enum class Ending { kOrderly, kAbrupt };

  explicit Child(const std::function<int()>& body, Ending ending = Ending::kAbrupt) {
    std::fflush(nullptr);
    id_ = ::fork();
    if (id_ != 0) return;
    const int status = body();
    std::fflush(nullptr);
    if (ending == Ending::kOrderly) std::exit(status);
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

  // Waits for the process. Returns its exit status, or 128 plus the number of the signal that ended it.
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

// Runs `body` in a child process that ends with `exit`. Returns its exit status.
inline int inChild(const std::function<int()>& body) {
  return Child(body, Child::Ending::kOrderly).wait();
}

// An object in memory that the process shares with its later children.
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

// Whether a signal interrupts a system call. The thread sanitizer delays signals until the call has ended.
#if defined(__SANITIZE_THREAD__)
constexpr bool kSignalsInterrupt = false;
#else
constexpr bool kSignalsInterrupt = true;
#endif

// Whether this process has a child, including zombies.
inline bool hasChildren() {
  siginfo_t ended{};
  return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0;
}

// Waits until the condition is true. Returns false after 30 seconds.
inline bool becomesTrue(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return true;
}

}  // namespace support
