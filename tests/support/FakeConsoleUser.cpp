#include "tests/support/FakeConsoleUser.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <optional>

#include "platform/Users.h"

namespace platform {

std::optional<uid_t> consoleUser() {
  return support::fakeConsoleUser;
}

}  // namespace platform

// Replaces the function of the C library.
extern "C" int seteuid(uid_t user) noexcept {
  ++support::switchCount;
  return static_cast<int>(::syscall(SYS_setresuid, static_cast<uid_t>(-1), user, static_cast<uid_t>(-1)));
}
