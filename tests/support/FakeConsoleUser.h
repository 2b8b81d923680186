// Stands in for the system's answer who sits at the machine; a test that links FakeConsoleUser.cpp decides that.

#pragma once

#include <sys/types.h>

#include <optional>

namespace support {

// Whom `platform::consoleUser` names; nobody at first.
inline std::optional<uid_t> fakeConsoleUser;

// How many times the process asked to become another user.
inline int switches = 0;

}  // namespace support
