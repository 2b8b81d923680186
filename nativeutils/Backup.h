/// @file
/// Moves a file-system object aside under a numbered name before it is replaced, and back when that fails.
///
/// The backup of the object N in the folder P is the object renamed to P + "//" + N + "_bkp" + K with a number K of at
/// least 1, "/opt//Tool_bkp1". The two slashes are meant. After each successful backup every older one of the same name
/// is deleted, so that at most one is left.
///
/// All functions may be called from any thread; they keep no state, take no locks and never throw. Two processes that
/// back up the same object at once can pick the same number: callers that need exclusion hold a lock that all of them
/// know. Paths are bytes and end at their first NUL, as in Files.h. Messages go to the application's log with the
/// component "Native-Utils"; what `utilDeleteFolder` logs about a failing removal comes before the messages named here.

#pragma once

#include <string>

/// Moves what is at `pathToBkp` aside: a folder, a file, or a symbolic link itself, dangling or not.
///
/// A slash at the end asks for a folder: with it a file or a dangling link counts as nothing, and a link to a folder is
/// not moved, which is a failure.
///
/// The number is one more than the largest in the folder. To find it the whole tree under P is walked, without
/// following symbolic links, and every entry counts whose path below P holds N + "_bkp" anywhere and at which something
/// is (a dangling link is nothing): its number is read from the text after the last "_bkp" as `atoi` does, "3x" and
/// "03" being 3 and "x" being 0. After the rename every one of these entries is deleted, in the order of the walk. So
///
/// - 'OldApp_bkp5' is an older backup of "App" too, and so is every entry inside 'App_bkp2': the folder goes first,
///   and each entry in it is then missed and logged;
/// - an entry inside the object itself that holds such a name is looked for at its former path, missed and logged, and
///   stays in the backup.
///
/// A number too large for an `int` counts as the largest `int`, after which no number is left: the backup then gets the
/// smallest number, from 1, that no entry of P has, and the older ones are deleted as usual.
///
///     /tmp/t: App, App_bkp2, App_bkp7       => /tmp/t: App_bkp8         backupPath "/tmp/t//App_bkp8"
///     /tmp/t: App, App_bkp                  => /tmp/t: App_bkp1         backupPath "/tmp/t//App_bkp1"
///     /tmp/t: (nothing at "/tmp/t/App")     => true                     backupPath ""
///
/// What is logged: "utilBackupFolderIfExits pathToBkp %s" (info) first; "NOTE trying to backup ... Source path does not
/// exits. So Success." (info); "Backup parent folder path '%s' is not present" (info), after which the rename fails;
/// "Backup folder path '%s'" (info); "Tring to backup folder, old backup folder already exits, trying to delete folder
/// %s." (warning) when something that the walk has not counted is in the backup's place, and "Failed to delete backup
/// folder %s." (warning); "Error Failed to rename the directory." (fatal); "Trying to delete other backup paths" (info)
/// and, for each that stays, "Failed to delete back up folder '%s'" (error).
///
/// @param pathToBkp what shall be moved
/// @param backupPath on success where it is now, or the empty text when there was nothing to move; else unchanged
/// @param unused has no meaning: older backups are deleted whatever it is
/// @return true also when there was nothing to move or older backups could not be deleted
bool utilBackupFolderIfExits(const std::string& pathToBkp, std::string& backupPath, bool unused);

/// Renames `from` to `to`, after deleting what is at `to`, with everything in it.
///
/// Before anything is deleted it is checked whether `from` can take the place. Where it cannot, what is at `to` stays,
/// and the failure is logged with the number that says why:
///
/// - ENOENT: nothing is at `from`, not even a link;
/// - EINVAL: the folder at `to` holds `from`, at whatever depth, or the link at `to` is on the way to it, or `to` lies
///   in the folder `from`;
/// - ELOOP: `from` is a symbolic link that leads to what is at `to` or into it, or that would lead back to itself
///   there;
/// - EXDEV: the two lie on different file systems;
/// - EACCES and EPERM: this user may not take `from` out of its folder;
/// - ENOTDIR: a path ends in a slash, and `from` is no folder but a file or a link; EBUSY: `from` ends in "." or "..".
///
/// Only what cannot be known before can still cost the object at `to`: what others do meanwhile, a mount point at
/// `from`, a failing disk.
///
/// When deleting `to` would delete `from` too, nothing is deleted and only `rename` is called:
///
/// - the same path, or another spelling of it: succeeds and changes nothing;
/// - another spelling where the folder is not case-sensitive: the entry gets the spelling of `to`;
/// - one folder under a path that `rename` does not take ("/t/App/."), or mounted at both paths: fails.
///
/// Two hard links of a file are separate entries: `to` is deleted and `from` takes its place, so one link is gone. In a
/// folder that this user may not read they cannot be told from two spellings: `rename` then succeeds, and both stay.
///
///     util_renameFolderToFolder("/t/App/App_bkp1", "/t/App")  => false, '/t/App' is as it was
///     util_renameFolderToFolder("/t/App", "/t/./App")         => true, and nothing has changed
///     util_renameFolderToFolder("/t/App/.", "/t/App")         => false, '/t/App' is as it was
///     util_renameFolderToFolder("/t/a", "/t/b"), hard links   => true, only '/t/b' is left
///
/// Logs "NOTE trying to backup ... backup already exists. trying to remove..." (info) first, whenever something is at
/// `to`; "Failed to delete the backup file: %s" (error) when the deletion fails and it gives up; and "Failed to rename
/// Error code (%d:%s) the directory from %s to %s." (fatal) with `errno` and its text.
bool util_renameFolderToFolder(const std::string& from, const std::string& to);

/// Moves a backup back to `targetPath`, in the place of what is there: `util_renameFolderToFolder`, which logs for it.
/// When the backup cannot take that place, what is there stays.
bool utilRestoreFolder(const std::string& backupPath, const std::string& targetPath);

/// Puts a symbolic link in the place of an object, which is backed up until the link is there.
///
/// The link is made at `linkPath` without its extension; the object there goes through `utilBackupFolderIfExits`, and
/// its backup is deleted in the end. A missing parent folder is created with owner 0, group 80 (the administrators) and
/// mode 0775, which takes the super-user; a `linkPath` without a folder, "Link.app", fails. When the link cannot be
/// made the object is moved back.
///
///     utilCreateSymlinkFromPathToPath("/opt/real", "/tmp/x/Link.app")  => '/tmp/x/Link' -> '/opt/real'
///
/// What is logged: "Error creating directory %s" (error); "Failed in backing up folder %s to folder %s" (error);
/// "Creating symbolic link of %s to folder %s" (info); "Error Creating symbolic link for path (%s) to path (%s),
/// Errorno: %d, error msg: %s" (error) and, when the object cannot be moved back or there was none, "Error in restoring
/// backedup folder %s to %s" (error); "Could not delete the backedup folder %s" (error), which does not change the
/// result.
///
/// @param target the link's text, stored as given: relative or absolute, and whether something is there or not
/// @param linkPath where the link shall be
/// @return whether the link is there
bool utilCreateSymlinkFromPathToPath(const std::string& target, const std::string& linkPath);
