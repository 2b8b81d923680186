// Lets a write beyond the limit of file sizes (RLIMIT_FSIZE) fail with EFBIG instead of ending the process by SIGXFSZ.
//
// - Only while a scope exists, in any thread: macOS may deliver the signal to another thread than the one that writes.
//   At other times the signal ends the process as before.
// - Only if the program has not chosen an action for the signal itself.
// - Does not block the signal, which would cost two system calls for each scope.

#pragma once

namespace platform {

// Installs a handler if the signal's action is the default one.
void handleFileSizeSignal();

class FileSizeSignalScope {
 public:
  FileSizeSignalScope();
  FileSizeSignalScope(const FileSizeSignalScope&) = delete;
  FileSizeSignalScope& operator=(const FileSizeSignalScope&) = delete;
  ~FileSizeSignalScope();
};

}  // namespace platform
