// A library to preload: kills the program that SVO_DYING_CHILD names, SVO_DYING_AFTER milliseconds after its start.

#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>

namespace {

__attribute__((constructor)) void setTimer() {
  const char* const name = getenv("SVO_DYING_CHILD");
  const char* const delay = getenv("SVO_DYING_AFTER");
  if (name == nullptr || delay == nullptr || strcmp(program_invocation_short_name, name) != 0) return;
  const long milliseconds = atol(delay);
  if (milliseconds == 0) (void)raise(SIGKILL);
  const itimerval timer = {{0, 0}, {0, milliseconds * 1000}};
  (void)setitimer(ITIMER_REAL, &timer, nullptr);  // the default action of its signal ends the program
}

}  // namespace
