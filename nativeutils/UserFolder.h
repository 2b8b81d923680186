/// @file
/// The home folder of the user at the machine. Stands below the log, and logs nothing.

#pragma once

#include <string>

/// The home folder of the console user, or else of the effective user; `path` is "" when it is not known. Always true.
/// Becomes the console user for the length of the look-up: nothing that depends on the effective user id may run beside
/// it.
bool utilGetUserFolderPath(std::string& path);

/// The home folder of the effective user; `path` is "" when it is not known. Always true.
bool util_getUserFolderPath(std::string& path);
