// The message of a run, and the named pipe that it is written to. The names of the functions are fixed by the
// interface.
//
// - The message is XML (XML 1.0, section 2.4: the five predefined entities) without a declaration, line break or
//   terminating NUL.
// - Main thread. Does not log, throw or block.

#pragma once

#include <string>

// The result of a run. Any other value is reported like `kOptionsMissing`.
enum ResultCode : int {
  kSignedIn = 0,
  kWindowClosed = 1,
  kLoadFailed = 2,
  kOptionsMissing = 255,
};

// Replaces `"`, `&`, `'`, `<` and `>` by their entities in one pass. Other bytes are unchanged, including invalid
// UTF-8.
//   "a&b"    => "a&amp;b"
//   "&amp;"  => "&amp;amp;"
void EncodeXMLData(std::string& text);

// Returns the message for `code`. Escapes `url` in place, even if the message does not contain it.
//   0, "cb:/d?a&b"  => "<result><URL>cb:/d?a&amp;b</URL></result>"
//   1, ""           => "<errorNo><error>1</error></errorNo>"
//   7, ""           => "<errorNo><error>255</error></errorNo>"
std::string ConstructOutputString(int code, std::string& url);

// Sets the pipe's mode to 0644 and writes `message` with one non-blocking write.
//
// - The pipe is opened for reading and writing, so the call returns at once even if nothing reads yet. It is never
//   created.
// - Returns true if every byte was written. A message longer than the pipe's buffer (64 KiB on Linux, 8 KiB on
//   macOS) is cut; the result is then false.
// - The message is lost when no process has the pipe open: the launcher opens its end before it starts the window.
// - A regular file is written at its start and not truncated. For anything else, such as a device or a folder, returns
//   false and changes nothing.
// - Async-signal-safe.
bool WriteFIFO(const std::string& pipePath, const std::string& message);
