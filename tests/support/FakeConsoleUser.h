// Replaces `platform::consoleUser` and counts the calls of `seteuid`. Requires FakeConsoleUser.cpp.

#pragma once

#include <sys/types.h>

#include <optional>

namespace support {

// No value means no console user.
inline std::optional<uid_t> fakeConsoleUser;

// Number of calls of `seteuid`.
inline int switchCount = 0;

}  // namespace support
