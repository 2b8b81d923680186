// Stands in for the system's answer who logged in; a test that links FakeLogin.cpp decides that.

#pragma once

#include <string>

namespace support {

// The login name of the process; nobody at first.
inline std::string fakeLogin;

}  // namespace support
