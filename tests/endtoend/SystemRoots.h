// Other root certificates for one program than the system's, as though an administrator had replaced them.

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace endtoend {

// The command to put in front of a program's: runs it with the certificates in `bundle`, in PEM, as the system's only
// roots. It sees them in a mount namespace of its own; nothing changes for anybody else. Nothing when the system has no
// such store, or lets this user make no such namespace.
std::optional<std::vector<std::string>> withSystemRoots(const std::filesystem::path& bundle);

}  // namespace endtoend
