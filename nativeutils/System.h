/// @file
/// Queries about the user, the machine, its well-known folders and its volumes.
///
/// - Functions keep no state, do not throw, and may be called from any thread. `utilGetUSFPath` is an exception; see
///   `utilGetUserFolderPath`.
/// - Paths are byte strings, UTF-8 by convention.
/// - Output arguments are unchanged if a function returns false.
/// - Log messages: see the table at the end of this file.

#pragma once

#include <cstdint>
#include <string>

/// A version of the operating system.
struct os_version {
  std::int64_t major;   ///< the first number
  std::int64_t minor;   ///< the second number
  std::int64_t bugFix;  ///< the third number
};

/// Returns whether the user who logged in is an administrator: a member of the group with the number 80 or of a group
/// with the name "admin".
///
/// - Checks the effective group of the process and the groups of the login name (`getlogin`), at most 16 in total.
/// - On Linux a process without a login (a service, a container, a scheduled program) has no login name; the result is
///   false.
/// - The super-user is an administrator only as a member of such a group.
bool utilIsUserAdmin();

/// Returns whether the effective user id is 0.
bool utilIsUserRoot();

/// Gets the folder for the user's application data. Creates the folder and its missing parents.
///
/// On Linux this is `$XDG_DATA_HOME` or, if that is unset, empty or relative, ".local/share" in the effective user's
/// home folder (XDG base directories). New folders have the mode 0700.
///
///     utilGetUserAppDataFolder(path)  => true, path is "/home/ann/.local/share"
///
/// @return false if the folder cannot be found or created, if its path has more than 1023 bytes, and if its path is not
///         UTF-8
bool utilGetUserAppDataFolder(std::string& path);

/// Gets the system disk's folder for the application data of all users. On Linux "/usr/share" (FHS 4.11).
///
/// @return false in the cases of `utilGetUserAppDataFolder`
bool utilGetSystemApplicationSupportFolderPath(std::string& path);

/// Gets the folder for shared data of the maker's programs. On Linux "/usr/local/share/Orvane" (FHS 4.9). Creates its
/// parent if possible. The folder itself may not exist. Always returns true.
bool utilGetQRBPath(std::string& path);

/// Gets the folder in which applications are installed for all users. On Linux "/opt" (FHS 3.13). Creates it if
/// possible. Always returns true.
bool utilGetApplicationsPath(std::string& path);

/// Gets the folder in which the application manager is installed, with a trailing slash. Creates its parent.
///
/// On Linux "/opt/Orvane Application Manager/", because Linux has no separate folder for utilities.
///
/// @return false in the cases of `utilGetUserAppDataFolder`
bool utilGetVormInstallPath(std::string& path);

/// Gets the first of these four folders for shared files that can be created. H is the home folder of the console user,
/// UUID a new UUID. Creates nothing.
///
/// 1. H/Applications/Orvane/TARN/Kelvo/
/// 2. H/Library/Application Support/Orvane/TARN/Kelvo/
/// 3. /tmp/UUID/Orvane/TARN/Kelvo/
/// 4. H/UUID/Orvane/TARN/Kelvo/
///
/// The nearest existing ancestor decides: the first folder is the result if H is writable and has no "Applications".
/// See `utilIsCreatableWritablePath`, and `utilGetUserFolderPath` for the restrictions on other threads.
///
/// @return false if none of the four can be created
bool utilGetUSFPath(std::string& path);

/// Removes the last component of a path. Works on the text only. Always returns true.
///
///     "/opt/Kelvo/"  => "/opt"      "Kelvo"  => ""      "/"  => "/"
///
/// @param kelvoPath  need not exist
/// @param usfPath    set to the path without its last component
bool utilGetUSfPathFromKelvoPath(const std::string& kelvoPath, std::string& usfPath);

/// Gets the name of the running program: the name of its bundle if that ends in ".app", else the name of its
/// executable. Always returns true.
///
/// On Linux the bundle is the folder that contains the executable. Without /proc the name is "".
///
///     /usr/bin/tool       => "tool"      /opt/Tool.app/tool  => "Tool.app"
bool utilGetApplicationName(std::string& name);

/// Gets the folder of the running program: its bundle or, if that ends in ".app", the folder that contains the bundle.
///
///     /usr/bin/tool       => "/usr/bin"  /opt/Tool.app/tool  => "/opt"
///
/// @return false if the bundle is unknown
bool utilGetSelfPath(std::string& path);

/// Does nothing. `language` is unchanged. Always returns true.
bool utilGetOSLanguage(std::string& language);

/// Gets the version of the running system. On Linux this is the version of the kernel: the leading numbers of the
/// release of `uname`. A missing number is 0.
///
///     "6.1.0-18-amd64"  => 6, 1, 0
///
/// @return false if the system does not report one of the numbers
bool utilGetCurrentOSVersion(os_version& version);

/// Parses a version. Always returns true.
///
/// - The text is split at dots. Empty pieces are skipped, and pieces after the third are ignored.
/// - Each piece is parsed as `strtol` does in base 10. A missing piece and a piece that is not a number are 0.
///
/// Examples:
///
///     "10.6.8"  => 10, 6, 8      "10.7"    => 10, 7, 0      "11..2"    => 11, 2, 0
///     ""        => 0, 0, 0       "6.x.1a"  => 6, 0, 1       "1.2.3.4"  => 1, 2, 3
///
/// @param text     ends at its first NUL
/// @param version  set to the numbers
bool utilGetOSVersionFromOSVersionString(std::string text, os_version& version);

/// Compares `major`, then `minor`, then `bugFix`.
///
/// @return -1 if `a` is less than `b`, 1 if it is greater, 0 if they are equal
int utilCompareOSVersion(os_version& a, os_version& b);

/// Returns whether the executable of the running program contains code for x86-64 or 64-bit PowerPC.
///
/// False for every other processor, including 64-bit ARM, and for x32. False if the executable cannot be read, for
/// example because no descriptor is free.
bool utilIs64Bit();

/// Gets the mount point of the volume that contains `path`. For a path that does not exist, the nearest existing
/// ancestor decides.
///
/// - Symbolic links are followed.
/// - A bind mount is a mount of its own.
///
/// Examples:
///
///     "/proc/self/no/such"  => "/proc"      "relative/path"  => false
///
/// @param path        an absolute path
/// @param volumePath  set to the mount point, without a trailing slash unless it is "/"
/// @return false if the path is not absolute, and if an error other than a missing or too long name occurs: no
///         permission, a component that is not a folder, a loop of links
bool util_getVolumePath(const std::string& path, std::string& volumePath);

/// Gets the name of the volume that contains `path`, in UTF-8.
///
/// On Linux this is the label of the file system. Without a label in UTF-8 it is the last component of the mount point;
/// "/" for the root.
///
///     "/media/ann/Back up/notes"  => "Back up"
///
/// @param path        an absolute path; need not exist
/// @param volumeName  set to the name
/// @return false in the cases of `util_getVolumePath`, and if the mount point no longer exists
bool utilGetVolumeNameOfPath(const std::string& path, std::string& volumeName);

/// Gets whether the volume of `path` is case-sensitive: whether "name" and "NAME" are two files.
///
/// On Linux FAT, exFAT, HFS, HFS+ and the older NTFS driver are not. On file systems where folders may differ (ext4,
/// f2fs, tmpfs), the casefold flag of the folder of `path` decides.
///
/// @param path           must exist
/// @param caseSensitive  set to the result
/// @return false if the volume cannot be examined
bool utilIsDriveCaseSensitive(std::string path, bool& caseSensitive);

/// @file
/// ## Logs
///
/// Component "Native-Utils". Functions that are not in the table log nothing.
///
/// - A: `utilGetUserAppDataFolder` and `utilGetSystemApplicationSupportFolderPath`
/// - I: `utilGetVormInstallPath`
/// - O: `utilGetCurrentOSVersion`
/// - V: `util_getVolumePath`
/// - N: `utilGetVolumeNameOfPath`
///
/// | message | level | function | when |
/// |---|---|---|---|
/// | "Failed in finding location information  in utilGetUserAppDataFolder error:%d" | warning | A | 1 |
/// | "Failed in path conversion in utilGetUserAppDataFolder error:%d" | warning | A | 2 |
/// | "Error in allocating memory in utilGetUserAppDataFolder" | warning | A | 3 |
/// | "Error creating Application-Utilities install path for Kelvo, Error Code: %d" | fatal | I | 1 |
/// | "Error in converting path into POSIX-style pathname, Error Code: %d" | fatal | I | 2 |
/// | "Error converting Application-Utilities path as C string to string" | fatal | I | 3 |
/// | "System OS Version - major = %ld, minor = %ld, bugFix = %ld" | debug | O | on success |
/// | "Unable to retrieve OS major version" | fatal | O | no major number |
/// | "Unable to retrieve OS minor version" | fatal | O | no minor number |
/// | "Unable to retrieve OS bug fix version" | fatal | O | no bug-fix number |
/// | "Error in getting ... util_getVolumePath" | error | V, N | the mount point cannot be found |
/// | "utilGetVolumeNameOfPath empty path" | warning | N | `path` is empty |
/// | "utilGetVolumeNameOfPath failed to get volume path." | warning | N | after the message of V |
///
/// 1. The folder cannot be found or created. The number is the status; on Linux `errno`.
/// 2. The path has more than 1023 bytes.
/// 3. The path is not UTF-8.
