#include "tests/support/FakeLogin.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

// Replaces the function of the C library.
extern "C" int getlogin_r(char* name, std::size_t size) {
  if (support::fakeLogin.empty()) return ENXIO;
  if (support::fakeLogin.size() >= size) return ERANGE;
  (void)support::fakeLogin.copy(name, size);
  name[support::fakeLogin.size()] = '\0';
  return 0;
}
