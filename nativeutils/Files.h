/// @file
/// Creates, tests, renames, copies and deletes files and folders, and changes their owners.
///
/// All functions may be called from any thread; none keeps state, throws, or waits for anything but the file system.
/// Paths are bytes: they need not be valid UTF-8 and may hold newlines; a relative path starts at the working folder,
/// and only `utilIsCreatableWritablePath` knows what "~" means. Messages go to the application's log with the component
/// "Native-Utils"; what is logged at which level stands with each function.

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
/// What stands at `path` already counts as the folder, a regular file or a dangling symbolic link too. Parents get
/// `mode` as `mkdir` and the umask leave it, and never the owner and the group: those are given to the last folder
/// alone, and to what stood there before. Processes that create the same folders at once all succeed.
///
///     utilCreateDirectoryPathWithAttributes("/tmp/a/b/c", -1, -1, 0775)  => true, and true again
///
/// @param path the folder; null gives false
/// @param owner the user who shall own it
/// @param group the group that shall own it
/// @param mode the POSIX permission bits. The umask applies when the folder is created; with an owner and a group the
///        bits are set exactly, afterwards. With -1 (0xFFFFFFFF) for the owner or the group nothing is changed once the
///        folder exists: neither owner, group nor mode.
/// @return whether all of that succeeded; on false `errno` says why
bool utilCreateDirectoryPathWithAttributes(const char* path, unsigned int owner, unsigned int group,
                                           unsigned short mode);

/// Whether anything but a folder is at `path`. A symbolic link counts as what it leads to: a dangling one is nothing.
bool utilFileExitsAtPath(const std::string& path);

/// Whether a folder, or a symbolic link to one, is at `path`.
bool utilFolderExitsAtPath(const std::string& path);

bool utilRenamePathToPath(const std::string& from, const std::string& to);
bool utilDeleteFolder(const std::string& path, bool unused1, bool unused2);
bool utilDeleteFolderIfEmpty(const std::string& path);
bool utilFolderHasPermission(const std::string& path, const PermissionType& type);
bool utilDeleteFileIfExitsAtPath(const std::string& path, bool unused);
bool utilCopySrcFileToDstFolder(const std::string& srcFile, const std::string& dstFolder, bool unused);
bool utilChown(const std::string& path);
bool utilGetSubFolderList(const std::string& path, std::vector<std::string>& names);
bool utilGetDisplayNameForFolderPath(const std::string& path, std::string& displayName);

/// Whether a file or folder can be created at `path`, once its missing parents have been. Logs nothing.
///
/// The nearest existing object on the way up decides, `path` itself included: the process's real user must be able to
/// read, write and search it (so a plain file passes only when it may be executed too). A first component "~" or
/// "~name" stands for a home folder, as the password database has it. A relative path of which nothing exists gives
/// false; the working folder is not asked.
///
///     utilIsCreatableWritablePath("~/new/deeper", out)  => true, out is "/home/ann"
///
/// @param path what shall be created; null and "" give false
/// @param existingPath on true the nearest existing object, with its home folder written out; else unchanged
bool utilIsCreatableWritablePath(const char* path, std::string& existingPath);
