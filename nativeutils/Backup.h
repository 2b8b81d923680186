/// @file
/// Backs up a file-system object before it is replaced, restores it, and replaces objects.
///
/// - The backup of the object N in the folder P is the object renamed to P + "//" + N + "_bkp" + K, where K is a number
///   of at least 1: "/opt//Tool_bkp1". The two slashes are intended.
/// - A successful backup deletes all earlier backups of the same name.
/// - All functions may be called from any thread. They keep no state, take no locks and do not throw. Two processes
///   that back up the same object at the same time can choose the same number; callers that need exclusion hold a lock.
/// - A path is a byte string and ends at its first NUL.
/// - Log messages: see the table at the end of this file.

#pragma once

#include <string>

/// Renames the object at `pathToBkp` to its backup path: a folder, a file, or a symbolic link itself, dangling or not.
///
/// - If `pathToBkp` ends in "/", it must be a folder: a file and a dangling link count as missing, and a link to a
///   folder is a failure.
/// - The whole tree below P is searched for other backups, without following symbolic links. An entry is another backup
///   if its path relative to P contains N + "_bkp" and something exists there (nothing does at a dangling link).
/// - The number of another backup is the text after the last "_bkp", read as by `atoi`: "3", "3x" and "03" are 3, "x"
///   is 0. A number that exceeds the range of `int` is the largest `int`.
/// - The new number is the largest number plus 1. After the largest `int` it is the smallest number of at least 1 that
///   is not in use.
/// - After the rename, the other backups are deleted in the order of the search. One that cannot be deleted does not
///   change the result.
///
/// So these are other backups as well:
///
/// - 'OldApp_bkp5', for the object "App";
/// - every entry in the folder 'App_bkp2'. It is deleted with the folder; its own deletion then fails, which is logged;
/// - an entry in the object itself. It remains in the backup; the deletion at its previous path fails, which is logged.
///
/// Examples:
///
///     /tmp/t: App, App_bkp2, App_bkp7       => /tmp/t: App_bkp8         backupPath "/tmp/t//App_bkp8"
///     /tmp/t: App, App_bkp                  => /tmp/t: App_bkp1         backupPath "/tmp/t//App_bkp1"
///     /tmp/t: (nothing at "/tmp/t/App")     => true                     backupPath ""
///
/// @param pathToBkp   the object; relative or absolute
/// @param backupPath  on success the path of the backup, or "" if nothing exists at `pathToBkp`; unchanged on failure
/// @param unused      ignored
/// @return true also if there was nothing to back up
bool utilBackupFolderIfExits(const std::string& pathToBkp, std::string& backupPath, bool unused);

/// Renames `from` to `to` and removes the object that was at `to`, a folder with its contents.
///
/// - The object at `to` is renamed to "." and a UUID in its folder and removed after `from` has been renamed. If `from`
///   cannot be renamed, the object gets its name back. A process that is killed can leave it under the other name.
/// - If the object at `to` cannot be removed completely, the call fails; `from` and what remains at `to` keep their
///   paths.
/// - Exception: where the file system cannot rename the object at `to` (a folder of a lower layer of an overlay), it is
///   removed first, and lost if `from` cannot be renamed.
///
/// These errors are logged, with the object at `to` unchanged:
///
/// - ENOENT: nothing is at `from`, not even a link;
/// - EINVAL: the object at `to` is a folder that contains `from`, at any depth, or a link on the path `from`; or `to`
///   is in the folder `from`;
/// - ELOOP: `from` is a symbolic link to the object at `to` or into it, or would refer to itself at `to`;
/// - EXDEV: the paths are on different file systems or mounts;
/// - EACCES and EPERM: this user may not move `from` out of its folder;
/// - ENOTDIR: a path ends in "/" and `from` is a file or a link;
/// - EBUSY: `from` ends in "." or "..", or is a mount point.
///
/// If removing the object at `to` would remove `from`, only `rename` is called:
///
/// - for the same path, or another spelling of it: succeeds and changes nothing;
/// - for another spelling in a folder that is not case-sensitive: the entry gets the spelling of `to`;
/// - for one folder, under a path that `rename` refuses ("/t/App/.") or mounted at both paths: fails.
///
/// Two hard links of a file are separate entries: only `to` remains. In a folder that this user may not read they
/// cannot be distinguished from two spellings; the call then succeeds, and both remain.
///
///     util_renameFolderToFolder("/t/App/App_bkp1", "/t/App")  => false, '/t/App' is unchanged
///     util_renameFolderToFolder("/t/App", "/t/./App")         => true, nothing is changed
///     util_renameFolderToFolder("/t/App/.", "/t/App")         => false, '/t/App' is unchanged
///     util_renameFolderToFolder("/t/a", "/t/b"), hard links   => true, only '/t/b' remains
bool util_renameFolderToFolder(const std::string& from, const std::string& to);

/// Moves a backup back: `util_renameFolderToFolder(backupPath, targetPath)`.
bool utilRestoreFolder(const std::string& backupPath, const std::string& targetPath);

/// Creates a symbolic link in place of the object at its path.
///
/// - The link is created at `linkPath` without its extension.
/// - An object there is backed up by `utilBackupFolderIfExits`. The backup is deleted after the link has been created,
///   and restored if the link cannot be created. A backup that cannot be deleted does not change the result.
/// - A missing parent folder is created with owner 0, group 80 (the administrators) and mode 0775, which only the
///   super-user may do.
/// - A `linkPath` without a folder, for example "Link.app", is a failure.
///
///     utilCreateSymlinkFromPathToPath("/opt/real", "/tmp/x/Link.app")  => '/tmp/x/Link' -> '/opt/real'
///
/// @param target    the text of the link, stored as given: relative or absolute, existing or not
/// @param linkPath  the path of the link, with an extension that is removed
/// @return whether the link was created
bool utilCreateSymlinkFromPathToPath(const std::string& target, const std::string& linkPath);

/// @file
/// ## Logs
///
/// Component "Native-Utils". The functions also log the messages of the functions that they call.
///
/// `utilBackupFolderIfExits`:
///
/// | message | level | reason |
/// |---|---|---|
/// | "utilBackupFolderIfExits pathToBkp %s" | info | start |
/// | "NOTE trying to backup ... Source path does not exits. So Success." | info | nothing to back up |
/// | "Backup parent folder path '%s' is not present" | info | the rename then fails |
/// | "Backup folder path '%s'" | info | the new path |
/// | "Tring to backup folder, old backup folder already exits, trying to delete folder %s." | warning | path in use |
/// | "Failed to delete backup folder %s." | warning | the object at that path remains |
/// | "Error Failed to rename the directory." | fatal | result false |
/// | "Trying to delete other backup paths" | info | there are other backups |
/// | "Failed to delete back up folder '%s'" | error | another backup remains |
///
/// `util_renameFolderToFolder`:
///
/// | message | level | reason |
/// |---|---|---|
/// | "NOTE trying to backup ... backup already exists. trying to remove..." | info | an object is at `to` |
/// | "Failed to delete the backup file: %s" | error | it cannot be removed; result false |
/// | "Failed to rename Error code (%d:%s) the directory from %s to %s." | fatal | `errno` and its text; result false |
///
/// `utilCreateSymlinkFromPathToPath`:
///
/// | message | level | reason |
/// |---|---|---|
/// | "Error creating directory %s" | error | result false |
/// | "Failed in backing up folder %s to folder %s" | error | result false |
/// | "Creating symbolic link of %s to folder %s" | info | before the link is created |
/// | "Error Creating symbolic link for path (%s) to path (%s), Errorno: %d, error msg: %s" | error | result false |
/// | "Error in restoring backedup folder %s to %s" | error | the backup remains, or there was none |
/// | "Could not delete the backedup folder %s" | error | the backup remains; result true |
