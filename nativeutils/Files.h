/// @file
/// Creates, tests, renames, copies and deletes files and folders, and changes their owners.
///
/// All functions may be called from any thread; none keeps state, throws, or waits for anything but the file system.
/// Paths are bytes: they need not be valid UTF-8 and may hold newlines; a path ends at its first NUL, as it does for
/// the system; a relative path starts at the working folder, and only `utilIsCreatableWritablePath` knows what "~"
/// means. Messages go to the application's log with the component "Native-Utils"; what is logged at which level stands
/// with each function.

#pragma once

#include <string>
#include <vector>

/// What `utilFolderHasPermission` asks for. Any `int` may be passed in one.
enum PermissionType : int {
  PermissionType_Read = 1,   ///< May the folder be read?
  PermissionType_Write = 2,  ///< May the folder be written? So does every value but 1.
};

/// Creates a folder and its missing parents: `utilCreateDirectoryPathWithAttributes(path, -1, -1, 0775)`.
/// @param path the folder
/// @param unused has no meaning
/// @return whether something is at `path` now
bool utilCreateDirectoryPath(const std::string& path, bool unused);

/// Creates a folder and its missing parents. Logs nothing.
///
/// What stands at `path` already counts as the folder, a regular file or a dangling symbolic link too. With a trailing
/// slash only a folder counts: "file/" and "dangling/" fail. Parents get `mode` as `mkdir` and the umask leave it, and
/// never the owner and the group: those are given to the last folder alone, and to what stood there before. Processes
/// that create the same folders at once all succeed.
///
/// A symbolic link at `path` counts as what it leads to, and owner, group and mode are given to that: a super-user
/// must not call this with an owner for a path in a folder that others may write, who could put a link there.
///
///     utilCreateDirectoryPathWithAttributes("/tmp/a/b/c", -1, -1, 0775)  => true, and true again
///
/// @param path the folder; null gives false
/// @param owner the user who shall own it
/// @param group the group that shall own it
/// @param mode the POSIX permission bits. The umask applies when the folder is created; with an owner and a group the
///        bits are set exactly, afterwards. With -1 (0xFFFFFFFF) for the owner or the group nothing is changed once the
///        folder exists: neither owner, group nor mode.
/// @return whether all of that succeeded; on false `errno` says why, but for null, which leaves it alone
bool utilCreateDirectoryPathWithAttributes(const char* path, unsigned int owner, unsigned int group,
                                           unsigned short mode);

/// Whether anything but a folder is at `path`. A symbolic link counts as what it leads to: a dangling one is nothing.
bool utilFileExitsAtPath(const std::string& path);

/// Whether a folder, or a symbolic link to one, is at `path`.
bool utilFolderExitsAtPath(const std::string& path);

/// Gives an object another path on the same file system, with POSIX `rename`: a file at `to` is replaced in one step,
/// an empty folder by a folder.
///
/// On failure it logs at fatal level "Failed to rename. Error code (%d:%s). Directory from %s to %s." with `errno` and
/// its text.
bool utilRenamePathToPath(const std::string& from, const std::string& to);

/// Removes what is at `path`: a file, a symbolic link itself, or a folder with everything in it.
///
/// No symbolic link is followed below `path`, not even one that another process puts in the place of a folder in
/// mid-way, and a slash at the end of `path` changes nothing. Folders of any depth are removed. What others remove
/// meanwhile is no failure. A failure does not keep the other entries, but a folder that cannot be removed whatever is
/// in it keeps its contents: a mount point, or a folder in one that may not be written. "/", "." and ".." are refused,
/// also at the end of a path.
///
/// On failure it logs at info level "NOTE Could not remove existing backup path. Error %s." with the first error,
/// "Permission denied: /tmp/t/a", whatever the path is for.
/// @param path what shall go; the empty text gives true at once, a path at which nothing is false
/// @param unused1 has no meaning
/// @param unused2 has no meaning
/// @return whether all of it is gone
bool utilDeleteFolder(const std::string& path, bool unused1, bool unused2);

/// Removes a folder that holds nothing, hidden entries included.
///
/// An empty `path` gives true. Logs "utilDeleteFolderIfEmpty.Not a directory: %s." at warning level where no folder is,
/// "utilDeleteFolderIfEmpty.Files exist at path. %s." at info level where it is not empty, and
/// "utilDeleteFolderIfEmpty.Could not remove path:%s Error:%s." at warning level when the removal fails, as it does
/// when another process has put something there since. Of a symbolic link to an empty folder the link is removed.
bool utilDeleteFolderIfEmpty(const std::string& path);

/// Whether a folder is at `path` that the process's real user may read, or write, by POSIX `access`. Logs nothing.
bool utilFolderHasPermission(const std::string& path, const PermissionType& type);

/// Removes the file at `path`; of a symbolic link to a file the link.
///
/// On failure it logs at fatal level "Error in utilDeleteFileIfExitsAtPath %s. error %s".
/// @param path the file; where nothing, a dangling symbolic link or a folder is, nothing is done
/// @param unused has no meaning
/// @return whether no file is there now
bool utilDeleteFileIfExitsAtPath(const std::string& path, bool unused);

/// Copies a file into a folder under its own name, in the place of a file that is there.
///
/// The former file is deleted first, so a failing copy leaves none; an unfinished copy is removed. On Linux a copy
/// keeps permission bits, times to the nanosecond, extended attributes with the access list and, as far as this process
/// may set them, owner and group; blocks are shared where the file system can, and holes stay holes. On macOS it keeps
/// the same, but shares no blocks and keeps neither holes nor file flags. A symbolic link to a file is copied as a link
/// with the same text. Pipes, sockets and devices cannot be copied and are never waited for. A file is not copied over
/// itself, into its own folder or through a link to the target, nor a link to where it would lead back to itself: that
/// fails, and the file at the target stays. A file that grows meanwhile is copied as far as it went.
///
/// Every failure is logged at fatal level: "Error Src file (%s) does not exits.", "Error Failed to copy src file to dst
/// (%s) ... either dst does not exits or not a folder.", "unable to delete dst file (%s)." or "Error Failed to copy.
/// Error(%s). Src file (%s) to dst file(%s)." (so too when a folder stands at the target).
///
///     utilCopySrcFileToDstFolder("/x/f.txt", "/y", false)  => true, '/y/f.txt' is a copy
///
/// @param srcFile the file
/// @param dstFolder an existing folder
/// @param unused has no meaning
bool utilCopySrcFileToDstFolder(const std::string& srcFile, const std::string& dstFolder, bool unused);

/// Gives a whole tree to the super-user: owner 0, group 0.
///
/// Every entry is changed, folders before and after what is in them. Symbolic links are changed and never followed, not
/// even one that another process puts in the place of a folder in mid-way, but `path` itself may be a link when it ends
/// in a slash. The walk stays on the file system of `path`: a mount point in it is changed, what lies below it not.
///
/// An entry that cannot be changed is logged at warning level, "Failed to change owner and group. Errorno (%d) error
/// msg(%s) for ptah %s.", and passed over; a `path` at which nothing is counts as such an entry.
/// @return false only for an empty path, which is logged at warning level as "Failed to open fts stream. %s."
bool utilChown(const std::string& path);

/// Appends the names of the folders in a folder, hidden ones and symbolic links to folders included. Logs nothing.
///
/// A folder that is there but cannot be read, since this user may not or no descriptor is free, gives true and no name.
/// @param path the folder, or a symbolic link to it; it may be one of `names`
/// @param names keeps what it held; the new names come in the order in which the file system lists them
/// @return whether a folder is at `path`, also when it holds no folder
bool utilGetSubFolderList(const std::string& path, std::vector<std::string>& names);

/// Answers only where there is nothing to show: for a path at which nothing is `displayName` becomes the empty text and
/// the result is true; for an existing or empty path the result is false and `displayName` keeps what it held. Logs
/// nothing.
bool utilGetDisplayNameForFolderPath(const std::string& path, std::string& displayName);

/// Whether a file or folder can be created at `path`, once its missing parents have been. Logs nothing.
///
/// The nearest existing object on the way up decides, `path` itself included: the process's real user must be able to
/// read, write and search it. Whether that is a folder is not asked: below a plain file that may be executed too the
/// answer is true, though nothing can be made there, and of "file/" with a plain file its folder decides, since nothing
/// is at that path. A first component "~" or "~name" stands for a home folder, as the password database has it. A
/// relative path of which nothing exists gives false; the working folder is not asked.
///
///     utilIsCreatableWritablePath("~/new/deeper", out)  => true, out is "/home/ann"
///
/// @param path what shall be created; null and "" give false
/// @param existingPath on true the nearest existing object, with its home folder written out; else unchanged
bool utilIsCreatableWritablePath(const char* path, std::string& existingPath);
