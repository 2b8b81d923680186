/// @file
/// The home folder of the user at the machine. Stands below the log, and logs nothing.
///
/// On Linux home folders come from the password database, never from `$HOME`, and the user at the machine is the owner
/// of the active session on the first seat, as systemd-logind tells; a login screen is nobody's.

#pragma once

#include <string>

/// The home folder of the user at the machine or, with nobody there, of the effective user. Always true.
///
/// When that user is another than the effective one, the whole process becomes that user for the length of the look-up:
/// nothing that depends on the effective user id may run beside it, such as this function in another thread. A process
/// that may not do that (only the super-user may) looks up its own user's folder.
///
/// @param path the folder; "" when it is not known
bool utilGetUserFolderPath(std::string& path);

/// The home folder of the effective user. Always true. May be called from any thread.
///
/// @param path the folder; "" when it is not known
bool util_getUserFolderPath(std::string& path);
