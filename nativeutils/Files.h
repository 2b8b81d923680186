/// @file
/// Creates, tests, renames, copies and deletes files and folders, and changes their owners.
///
/// - All functions may be called from any thread. They keep no state, do not throw, and wait only for the file system.
/// - A path is a byte string: it need not be valid UTF-8, may contain newlines, and ends at its first NUL.
/// - A relative path starts at the working folder. Only `utilIsCreatableWritablePath` expands "~".
/// - Log messages: see the table at the end of this file.

#pragma once

#include <string>
#include <vector>

/// The access that `utilFolderHasPermission` tests. Every `int` is a valid value.
enum PermissionType : int {
  PermissionType_Read = 1,   ///< Read access.
  PermissionType_Write = 2,  ///< Write access, as for every value except 1.
};

/// Creates a folder and its missing parents: `utilCreateDirectoryPathWithAttributes(path, -1, -1, 0775)`.
/// @param path    the folder
/// @param unused  ignored
bool utilCreateDirectoryPath(const std::string& path, bool unused);

/// Creates a folder and its missing parents, and sets owner, group and mode of the folder. Logs nothing.
///
/// - Any object at `path` counts as the folder, also a regular file or a dangling symbolic link. If `path` ends in "/",
///   only a folder does: "file/" and "dangling/" fail.
/// - Owner and group are set only for the folder itself, not for its parents, and also if it existed before.
/// - Parents get `mode` less the umask.
/// - Processes that create the same folders at the same time all succeed.
/// - Owner, group and mode of a symbolic link at `path` are set for its target. The super-user must not use an owner
///   for a path in a folder that others may write, because they could create a link there.
///
///     utilCreateDirectoryPathWithAttributes("/tmp/a/b/c", -1, -1, 0775)  => true, and true again
///
/// @param path   the folder; null gives false
/// @param owner  the new owner; -1 (0xFFFFFFFF) keeps owner, group and mode of the created or existing folder
/// @param group  the new group; -1 as for `owner`
/// @param mode   the POSIX permission bits; less the umask without owner and group, exact with them
/// @return whether all steps succeeded. If false, `errno` contains the reason, except for null.
bool utilCreateDirectoryPathWithAttributes(const char* path, unsigned int owner, unsigned int group,
                                           unsigned short mode);

/// Whether a file that is not a folder exists at `path`. Follows symbolic links: false for a dangling link.
bool utilFileExitsAtPath(const std::string& path);

/// Whether a folder or a symbolic link to one exists at `path`.
bool utilFolderExitsAtPath(const std::string& path);

/// Renames an object with POSIX `rename`: both paths are on one file system; a file atomically replaces a file, a
/// folder an empty folder.
bool utilRenamePathToPath(const std::string& from, const std::string& to);

/// Removes the object at `path`: a file, a symbolic link itself, or a folder of any depth with its contents.
///
/// - No symbolic link is followed, not even one that replaces a folder during the removal. A "/" at the end of `path`
///   is ignored.
/// - An entry that another process removes is not a failure.
/// - Continues after a failure and logs the first one: "Permission denied: /tmp/t/a".
/// - A folder keeps its contents if it could not be removed even when empty: a mount point, or a folder in a read-only
///   folder.
/// - "/" and a path that ends in "." or ".." are refused.
///
/// @param path     the object. An empty path gives true, a path at which nothing exists false.
/// @param unused1  ignored
/// @param unused2  ignored
/// @return whether the object is removed completely
bool utilDeleteFolder(const std::string& path, bool unused1, bool unused2);

/// Removes an empty folder. Hidden entries count.
///
/// - An empty path gives true.
/// - Of a symbolic link to an empty folder, the link is removed.
bool utilDeleteFolderIfEmpty(const std::string& path);

/// Whether a folder exists at `path` and the real user of the process has the access, as by POSIX `access`. Logs
/// nothing.
bool utilFolderHasPermission(const std::string& path, const PermissionType& type);

/// Removes the file at `path`; of a symbolic link to a file, the link.
/// @param path    the file. A folder, a dangling symbolic link and a missing file give true without a change.
/// @param unused  ignored
/// @return whether no file exists at `path`
bool utilDeleteFileIfExitsAtPath(const std::string& path, bool unused);

/// Copies a file into a folder under its name, replacing a file there.
///
/// - An existing file is deleted first, so that it is lost if the copy fails. An incomplete copy is removed.
/// - Keeps permission bits, times in nanoseconds, extended attributes and the access list; owner and group if this
///   process may set them.
/// - Linux: keeps holes and shares blocks if the file system can. macOS: neither, and does not keep file flags.
/// - A symbolic link to a file is copied as a link with the same target.
/// - Bytes appended to the file during the copy are omitted.
/// - Pipes, sockets and devices are failures and are not waited for.
/// - A copy over the file itself is a failure, also through a link to the target, and so is a link that would refer to
///   itself at the target. The file at the target is then unchanged.
/// - A folder at the target is a failure.
///
///     utilCopySrcFileToDstFolder("/x/f.txt", "/y", false)  => true, '/y/f.txt' is a copy
///
/// @param srcFile    the file
/// @param dstFolder  an existing folder
/// @param unused     ignored
bool utilCopySrcFileToDstFolder(const std::string& srcFile, const std::string& dstFolder, bool unused);

/// Sets owner 0 and group 0 for a whole tree.
///
/// - Every entry is changed, a folder before and after its contents. A missing `path` is an entry that cannot be
///   changed.
/// - Symbolic links are changed themselves and not followed, not even one that replaces a folder during the call. A
///   `path` that ends in "/" may be a link to a folder.
/// - A mount point below `path` is changed, its contents are not.
/// - Continues after an entry that cannot be changed.
///
/// @return false only for an empty path
bool utilChown(const std::string& path);

/// Appends the names of the folders in a folder, including hidden folders and symbolic links to folders. Logs nothing.
///
/// A folder that exists but cannot be read gives true and no name.
/// @param path   a folder or a symbolic link to one; may be an element of `names`
/// @param names  is not cleared; new names are in the order in which the file system lists them
/// @return whether `path` is a folder
bool utilGetSubFolderList(const std::string& path, std::vector<std::string>& names);

/// Sets `displayName` to "" and returns true if nothing exists at `path`. For an existing and for an empty path returns
/// false and does not change `displayName`. Logs nothing.
bool utilGetDisplayNameForFolderPath(const std::string& path, std::string& displayName);

/// Whether a file or folder can be created at `path` after its missing parents have been created. Logs nothing.
///
/// - The nearest existing object decides, which may be `path` itself: the real user of the process must be able to
///   read, write and search it.
/// - The object need not be a folder: below a regular file that is executable the result is true. "file/" does not
///   exist if "file" is a regular file, so that its folder decides.
/// - A first component "~" or "~name" is replaced by the home folder in the password database.
/// - A relative path of which no part exists gives false.
///
///     utilIsCreatableWritablePath("~/new/deeper", out)  => true, out is "/home/ann"
///
/// @param path          null and "" give false
/// @param existingPath  on success the nearest existing object, with "~" expanded; unchanged on failure
bool utilIsCreatableWritablePath(const char* path, std::string& existingPath);

/// @file
/// ## Logs
///
/// Component "Native-Utils".
///
/// | message | level | function |
/// |---|---|---|
/// | "Failed to rename. Error code (%d:%s). Directory from %s to %s." | fatal | `utilRenamePathToPath` |
/// | "NOTE Could not remove existing backup path. Error %s." | info | `utilDeleteFolder`, for every path |
/// | "utilDeleteFolderIfEmpty.Not a directory: %s." | warning | `utilDeleteFolderIfEmpty` |
/// | "utilDeleteFolderIfEmpty.Files exist at path. %s." | info | `utilDeleteFolderIfEmpty` |
/// | "utilDeleteFolderIfEmpty.Could not remove path:%s Error:%s." | warning | `utilDeleteFolderIfEmpty` |
/// | "Error in utilDeleteFileIfExitsAtPath %s. error %s" | fatal | `utilDeleteFileIfExitsAtPath` |
/// | "Error Src file (%s) does not exits." | fatal | `utilCopySrcFileToDstFolder` |
/// | "Error Failed to copy src file to dst (%s) ... either dst does not exits or not a folder." | fatal | the same |
/// | "unable to delete dst file (%s)." | fatal | the same |
/// | "Error Failed to copy. Error(%s). Src file (%s) to dst file(%s)." | fatal | the same |
/// | "Failed to open fts stream. %s." | warning | `utilChown`, for an empty path |
/// | "Failed to change owner and group. Errorno (%d) error msg(%s) for ptah %s." | warning | `utilChown`, per entry |
