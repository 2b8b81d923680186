// Writes the run's message when the program ends abnormally: by a signal, such as the abort of a library, or by a
// library's call of exit().
//
// - The message is the one for a failed load. It is built beforehand, and the signal handler makes system calls only.
// - Afterward the signal has its former effect: the program ends by it.
// - Nothing is logged: a handler cannot wait for the log's locks, which the interrupted thread may hold. The system
//   releases them with the process.

#pragma once

#include <string>

// No core file of this process and of the programs that it starts: it would contain passwords.
void forbidCoreFiles();

// From now on an abnormal end writes the message into the pipe, as `WriteFIFO` does, and a signal then calls `cleanUp`,
// which must be async-signal-safe. Call once, on the main thread.
//
// Keeps one descriptor for the pipe, so that the message is written even if the process has no free descriptor.
void reportAbnormalEnd(const std::string& pipePath, void (*cleanUp)() = nullptr);

// Returns whether the caller may write the message of this run. After `reportAbnormalEnd` that is true once: either for
// the first caller or for the abnormal end. Frees the descriptor kept for the pipe.
bool claimMessage();
