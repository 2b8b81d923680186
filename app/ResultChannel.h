// The one message of a run, and the named pipe that it goes into.
//
// The message is XML text (XML 1.0, section 2.4: the five predefined entities) without a declaration, a line break or
// a terminating NUL. Nothing here logs, throws or waits. Called on the main thread.

#pragma once

#include <string>

// What a run ends with. Every other value is reported like `kOptionsMissing`.
enum ResultCode : int {
  kSignedIn = 0,
  kWindowClosed = 1,
  kLoadFailed = 2,
  kOptionsMissing = 255,
};

// Replaces `"`, `&`, `'`, `<` and `>` by their entities in one pass; every other byte stays, invalid UTF-8 included.
//   "a&b"    => "a&amp;b"
//   "&amp;"  => "&amp;amp;"
void EncodeXMLData(std::string& text);

// The message for `code`. Escapes `url` in place, also for the codes whose message does not carry it.
//   0, "cb:/d?a&b"  => "<result><URL>cb:/d?a&amp;b</URL></result>"
//   1, ""           => "<errorNo><error>1</error></errorNo>"
//   7, ""           => "<errorNo><error>255</error></errorNo>"
std::string ConstructOutputString(int code, std::string& url);

// Gives the pipe the mode 0644 and writes `message` into it with one non-blocking write. The pipe is opened for reading
// and writing, so the call returns at once also when nobody listens yet; it is never created. True only when every byte
// was written; a message beyond what the pipe's buffer can take (64 KiB on Linux) is cut there and yields false.
// A message lives only as long as somebody has the pipe open: the launcher opens its end before it starts the window.
bool WriteFIFO(const std::string& pipePath, const std::string& message);
