// Ends the process after its own exit handlers and before those of the libraries.
//
// GNUstep saves its defaults when it is unloaded, and looks up the home folder for that. At that time nss_wrapper,
// which the tests use, has freed its tables: the process would crash.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

void exitNow(int status, void*) {
  (void)std::fflush(nullptr);
  ::_exit(status);
}

// Registered first, therefore called last.
const int registered = ::on_exit(exitNow, nullptr);

}  // namespace
