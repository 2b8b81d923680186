// Replaces the login name of the process. Requires FakeLogin.cpp, which replaces `getlogin_r`.

#pragma once

#include <string>

namespace support {

// Empty means that the process has no login.
inline std::string fakeLogin;

}  // namespace support
