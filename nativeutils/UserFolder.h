/// @file
/// Home folders of the console user and of the effective user.
///
/// - On Linux home folders come from the password database, never from `$HOME`.
/// - On Linux the console user is the owner of the active session of seat0, as systemd-logind reports it. A greeter
///   session has no console user.
/// - The functions do not throw and log nothing. The log uses the same folder.

#pragma once

#include <string>

/// Gets the home folder of the console user or, if there is none, of the effective user. Always returns true.
///
/// If the console user is not the effective user, the effective user id of the whole process changes during the lookup:
/// no other thread may do anything that depends on it, including a call of this function. A process that may not change
/// it (only the super-user may) gets the home folder of its own user.
///
/// @param path  set to the folder; "" if it is unknown
bool utilGetUserFolderPath(std::string& path);

/// Gets the home folder of the effective user. Always returns true. May be called from any thread.
///
/// @param path  set to the folder; "" if it is unknown
bool util_getUserFolderPath(std::string& path);
