// Who sits at the machine, and where home folders are.
//
// No answer comes from the environment, which a launcher may have set for somebody else.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The user whose session is on the screen of the first seat, on macOS at the console; nothing when nobody is logged in
// there.
std::optional<uid_t> consoleUser();

// The home folder of the effective user, as the password database has it; "" when it has none. On macOS as the folder
// finder (`FSFindFolder`) has it; "" when its path has more than 1023 bytes.
std::string homeFolder();

// The home folder of the user with this login name, as the password database has it; "" when it has none.
std::string homeFolderOf(const std::string& user);

// A first component "~" stands for the home folder of the effective user, "~name" for that user's; the result then
// comes without a trailing slash. A path that begins otherwise, or whose home folder is not known, stays as it is.
//   "~" => "/home/ann"   "~/new/" => "/home/ann/new"   "~bob/x" => "/home/bob/x"
//   "~nobody-such/x/" => "~nobody-such/x/"   "/tmp/~" => "/tmp/~"
std::string expandingTilde(std::string_view path);

}  // namespace platform
