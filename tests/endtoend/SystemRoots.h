// Replaces the system's root certificates for one program.

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace endtoend {

// Returns a command that runs a program with the certificates in `bundle` (PEM) as the only system roots, in a mount
// namespace of its own. Returns nothing if the system has no such store or denies the namespace.
std::optional<std::vector<std::string>> withSystemRoots(const std::filesystem::path& bundle);

}  // namespace endtoend
