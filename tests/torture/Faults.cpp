#include "tests/torture/Faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <string_view>

namespace torture {
namespace {

std::atomic<bool> armed{false};
std::atomic<int> reached{0};
std::atomic<const char*> failed{nullptr};
std::atomic<long> clockOffset{0};
int faultError = 0;
int faultNth = 0;
bool faultLasts = false;
char faultOnly[32];

bool concerns(const char* call) {
  if (faultError == kShortWrite) return std::strcmp(call, "write") == 0;
  if (faultError == kNoMemory) return std::strcmp(call, "new") == 0;
  if (std::strcmp(call, "new") == 0) return false;
  return faultOnly[0] == '\0' || std::strcmp(call, faultOnly) == 0;
}

// Whether this call fails. Sets `errno`.
bool fails(const char* call) {
  if (!armed || !concerns(call)) return false;
  const int number = ++reached;
  if (number < faultNth || (number > faultNth && !faultLasts)) return false;
  if (failed == nullptr) failed = call;
  errno = faultError;
  return true;
}

const char* nameOf(const sembuf* operation) {
  return operation->sem_op > 0 ? "semop +" : "semop -";
}

mode_t modeIn(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

void arm(const Fault& fault) {
  faultError = fault.error;
  faultNth = fault.nth;
  faultLasts = fault.lasting;
  faultOnly[fault.only.copy(faultOnly, sizeof faultOnly - 1)] = '\0';
  reached = 0;
  failed = nullptr;
  armed = true;
}

std::string disarm() {
  armed = false;
  const char* const call = failed;
  return call == nullptr ? "" : call;
}

void advanceClocks(std::chrono::seconds time) {
  clockOffset += static_cast<long>(time.count());
}

}  // namespace torture

// NOLINTBEGIN(readability-identifier-naming): names of the C library

using torture::fails;

namespace {

template <typename Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// Replaces a function that returns -1 on failure.
#define REPLACE(result, name, parameters, arguments, exceptions)    \
  extern "C" result name parameters exceptions {                    \
    static const auto real = original<result parameters>(#name);    \
    return fails(#name) ? static_cast<result>(-1) : real arguments; \
  }

REPLACE(ssize_t, read, (int fd, void* data, std::size_t size), (fd, data, size), )
REPLACE(ssize_t, pread, (int fd, void* data, std::size_t size, off_t at), (fd, data, size, at), )
REPLACE(off_t, lseek, (int fd, off_t at, int from), (fd, at, from), noexcept)
REPLACE(int, stat, (const char* path, struct stat* item), (path, item), noexcept)
REPLACE(int, lstat, (const char* path, struct stat* item), (path, item), noexcept)
REPLACE(int, fstat, (int fd, struct stat* item), (fd, item), noexcept)
REPLACE(int, fstatat, (int folder, const char* path, struct stat* item, int flags), (folder, path, item, flags),
        noexcept)
REPLACE(int, mkdir, (const char* path, mode_t mode), (path, mode), noexcept)
REPLACE(int, mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode), noexcept)
REPLACE(int, chmod, (const char* path, mode_t mode), (path, mode), noexcept)
REPLACE(int, fchmod, (int fd, mode_t mode), (fd, mode), noexcept)
REPLACE(int, ftruncate, (int fd, off_t size), (fd, size), noexcept)
REPLACE(int, flock, (int fd, int operation), (fd, operation), noexcept)
REPLACE(int, unlink, (const char* path), (path), noexcept)
REPLACE(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags), noexcept)
REPLACE(int, rename, (const char* from, const char* to), (from, to), noexcept)
REPLACE(int, renameat, (int fromFolder, const char* from, int toFolder, const char* to),
        (fromFolder, from, toFolder, to), noexcept)
REPLACE(int, renameat2, (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags),
        (fromFolder, from, toFolder, to, flags), noexcept)
REPLACE(int, link, (const char* from, const char* to), (from, to), noexcept)
REPLACE(int, linkat, (int fromFolder, const char* from, int toFolder, const char* to, int flags),
        (fromFolder, from, toFolder, to, flags), noexcept)
REPLACE(ssize_t, copy_file_range, (int from, off64_t* read, int to, off64_t* written, std::size_t size, unsigned flags),
        (from, read, to, written, size, flags), )
REPLACE(key_t, ftok, (const char* path, int number), (path, number), noexcept)
REPLACE(int, semget, (key_t key, int members, int flags), (key, members, flags), noexcept)

#undef REPLACE

extern "C" int semop(int set, sembuf* operations, std::size_t count) noexcept {
  static const auto real = original<int(int, sembuf*, std::size_t)>("semop");
  return fails(torture::nameOf(operations)) ? -1 : real(set, operations, count);
}

extern "C" int semtimedop(int set, sembuf* operations, std::size_t count, const timespec* timeout) noexcept {
  static const auto real = original<int(int, sembuf*, std::size_t, const timespec*)>("semtimedop");
  return fails(torture::nameOf(operations)) ? -1 : real(set, operations, count, timeout);
}

extern "C" int semctl(int set, int member, int command, ...) noexcept {
  static const auto real = original<int(int, int, int, ...)>("semctl");
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);  // the union, whose largest member is a pointer
  va_end(arguments);
  return fails("semctl") ? -1 : real(set, member, command, argument);
}

extern "C" int open(const char* path, int flags, ...) {
  static const auto real = original<int(const char*, int, ...)>("open");
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = torture::modeIn(flags, arguments);
  va_end(arguments);
  return fails("open") ? -1 : real(path, flags, mode);
}

extern "C" int openat(int folder, const char* path, int flags, ...) {
  static const auto real = original<int(int, const char*, int, ...)>("openat");
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = torture::modeIn(flags, arguments);
  va_end(arguments);
  return fails("openat") ? -1 : real(folder, path, flags, mode);
}

// The file streams of the C++ library open their file with it.
extern "C" FILE* fopen64(const char* path, const char* mode) {
  static const auto real = original<FILE*(const char*, const char*)>("fopen64");
  return fails("fopen64") ? nullptr : real(path, mode);
}

// Closes the file on failure too, as the system does.
extern "C" int close(int fd) {
  static const auto real = original<int(int)>("close");
  const bool reportFailure = fails("close");
  const int error = errno;
  const int result = real(fd);
  if (!reportFailure) return result;
  errno = error;
  return -1;
}

extern "C" ssize_t write(int fd, const void* data, std::size_t size) {
  static const auto real = original<ssize_t(int, const void*, std::size_t)>("write");
  if (!fails("write")) return real(fd, data, size);
  return torture::faultError == torture::kShortWrite ? real(fd, data, size / 2) : -1;
}

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  static const auto real = original<int(clockid_t, timespec*)>("clock_gettime");
  const int result = real(clock, now);
  now->tv_sec += torture::clockOffset;
  return result;
}

extern "C" int gettimeofday(timeval* now, void*) noexcept {
  timespec precise{};
  const int result = ::clock_gettime(CLOCK_REALTIME, &precise);
  *now = timeval{precise.tv_sec, precise.tv_nsec / 1000};
  return result;
}

extern "C" std::time_t time(std::time_t* out) noexcept {
  timespec now{};
  (void)::clock_gettime(CLOCK_REALTIME, &now);
  if (out != nullptr) *out = now.tv_sec;
  return now.tv_sec;
}

// NOLINTEND(readability-identifier-naming)

void* operator new(std::size_t size) {
  void* const memory = fails("new") ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
