// The folder of a web session that cannot live in memory alone. Nobody but the user can read it, and it is removed at
// every end of the program.
//
// - Its parent is the user's runtime folder, or else the temporary folder. No other user may be able to replace the
//   folder or a parent of it.
// - It is locked while the program runs. A folder whose program was killed is not locked; the next start removes it.
// - One per process. Main thread, except where noted.

#pragma once

#include <string>

// Removes the folders of this user's runs that were killed.
void removeAbandonedFolders();

// Creates and locks the folder. Returns its path, or "" if neither parent is safe.
const std::string& createPrivateFolder();

// The path of the folder; "" before `createPrivateFolder`, and if that failed.
const std::string& privateFolder();

// Names the process that writes to the folder by a pidfd, which is duplicated. It would create files again during the
// removal.
void setWriterOfPrivateFolder(int process);

// Kills the writer, and removes the folder and its contents, if there is one. Async-signal-safe.
void removePrivateFolder();
