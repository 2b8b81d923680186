// A library to preload: a process that crashes writes its name, the signal and its stack to standard error.
//
//   crash: WebKitNetworkPr: Aborted

#include <errno.h>
#include <execinfo.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <initializer_list>

namespace {

void write(const char* text) {
  (void)!::write(STDERR_FILENO, text, strlen(text));
}

void report(int number) {
  write("crash: ");
  write(program_invocation_short_name);
  write(": ");
  write(sigdescr_np(number));
  write("\n");
  void* frames[64];
  backtrace_symbols_fd(frames, backtrace(frames, 64), STDERR_FILENO);
  // A handler installed later, such as the JavaScript engine's, may have called this one.
  (void)::signal(number, SIG_DFL);
  (void)raise(number);
}

__attribute__((constructor)) void install() {
  // The first call loads a library, which needs a heap that is still sound.
  void* frame = nullptr;
  (void)backtrace(&frame, 1);

  struct sigaction action = {};
  action.sa_handler = report;
  action.sa_flags = SA_NODEFER;
  for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGTRAP})
    (void)sigaction(signal, &action, nullptr);
}

}  // namespace
