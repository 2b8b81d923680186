/// @file
/// Questions about the user, the machine and its well-known folders and volumes.
///
/// No function keeps anything between calls or throws, and all may be called from any thread. Paths are bytes, in
/// UTF-8 by convention. Results go into output arguments, which hold what they held before when a function answers
/// false. Messages go to the application's log with the component "Native-Utils"; what is logged at which level stands
/// with each function, and a function of which nothing is said logs nothing.

#pragma once

#include <cstdint>
#include <string>

/// A version of the operating system.
struct os_version {
  std::int64_t major;   ///< the first number
  std::int64_t minor;   ///< the second
  std::int64_t bugFix;  ///< the third
};

/// Whether the user who logged in is an administrator: a member of the group with the number 80, whatever its name, or
/// of a group with the name "admin".
///
/// Asked are the process's effective group and the groups of the login name (`getlogin`), the first 16 at most. On
/// Linux a process without a login (a service, a container, a scheduled program) has no such name, and the answer is
/// false; so it is for a super-user who is in neither group.
bool utilIsUserAdmin();

/// Whether the effective user id is 0.
bool utilIsUserRoot();

/// The folder where programs keep their data for this user; made, with the folders above it, when it is missing.
///
/// On Linux, as the XDG base directories have it: `$XDG_DATA_HOME`, or ".local/share" in the effective user's home
/// folder, made with mode 0700. A relative `$XDG_DATA_HOME` counts as none.
///
/// Warnings are "Failed in finding location information  in utilGetUserAppDataFolder error:%d" (it can neither be found
/// nor made; on Linux with the `errno`), "Failed in path conversion in utilGetUserAppDataFolder error:%d" (it is longer
/// than 1023 bytes) and "Error in allocating memory in utilGetUserAppDataFolder" (it is not UTF-8); each gives false.
///
///     utilGetUserAppDataFolder(path)  => true, path is "/home/ann/.local/share"
bool utilGetUserAppDataFolder(std::string& path);

/// The folder of the system disk where programs keep their data for everybody. On Linux "/usr/share" (FHS 4.11).
///
/// Logs and fails as `utilGetUserAppDataFolder`, in that function's name.
bool utilGetSystemApplicationSupportFolderPath(std::string& path);

/// The folder of the maker's data that all users share. On Linux "/usr/local/share/Orvane" (FHS 4.9). Its parent is
/// made when it is missing and that is possible; whether the folder exists is not said. Always true.
bool utilGetQRBPath(std::string& path);

/// The folder where applications are installed for everybody. On Linux "/opt" (FHS 3.13), which holds a folder for each
/// add-on package. Made when it is missing and that is possible. Always true.
bool utilGetApplicationsPath(std::string& path);

/// The folder where the application manager is installed, with a slash at its end. On Linux "/opt/Orvane Application
/// Manager/", for it has no folder of its own for tools.
///
/// The folder that holds it is made when it is missing. Fatal messages are "Error creating Application-Utilities
/// install path for Kelvo, Error Code: %d", "Error in converting path into POSIX-style pathname, Error Code: %d" and
/// "Error converting Application-Utilities path as C string to string", for the failures that
/// `utilGetUserAppDataFolder` warns of; each gives false.
bool utilGetVormInstallPath(std::string& path);

/// The first place where the folder of shared files can be created: "/Orvane/TARN/Kelvo/" below H/Applications,
/// H/Library/Application Support, /tmp/UUID and H/UUID, H being the home folder of the user at the machine and each
/// UUID a fresh one. Nothing is created.
///
/// The nearest folder that exists decides, so a writable home folder gives the first place even without "Applications"
/// in it. See `utilIsCreatableWritablePath`, and `utilGetUserFolderPath` for what must not run beside it.
///
/// @return false, with `path` unchanged, when none of the four can be created
bool utilGetUSFPath(std::string& path);

/// The folder that holds `kelvoPath`, as a matter of text alone. Always true.
///
///     "/opt/Kelvo/"  => "/opt"      "Kelvo"  => ""      "/"  => "/"
///
/// @param kelvoPath a path; need not exist
/// @param usfPath   the same without its last component
bool utilGetUSfPathFromKelvoPath(const std::string& kelvoPath, std::string& usfPath);

/// The file name of the running program, or the name of its bundle when that ends in ".app". Always true.
///
/// On Linux the bundle is the folder that holds the executable; the name is "" where the system does not tell (without
/// /proc).
///
///     /usr/bin/tool       => "tool"      /opt/Tool.app/tool  => "Tool.app"
bool utilGetApplicationName(std::string& name);

/// The folder of the running program: its bundle, or the folder that holds the bundle when that ends in ".app".
///
///     /usr/bin/tool       => "/usr/bin"  /opt/Tool.app/tool  => "/opt"
///
/// @return false where the system does not tell
bool utilGetSelfPath(std::string& path);

/// Does nothing and leaves `language` as it is. Always true.
bool utilGetOSLanguage(std::string& language);

/// The version of the running system. On Linux that of the kernel, the numbers that the release of `uname` begins with:
/// "6.1.0-18-amd64" is 6, 1, 0, and a number that a release does not have is 0.
///
/// Logs "System OS Version - major = %ld, minor = %ld, bugFix = %ld" at debug level. The first number that the system
/// does not tell gives false and one fatal message: "Unable to retrieve OS major version", "Unable to retrieve OS minor
/// version" or "Unable to retrieve OS bug fix version".
bool utilGetCurrentOSVersion(os_version& version);

/// Reads a version from text: the first three of the pieces between dots, empty pieces skipped, each as `strtol` reads
/// a decimal number. A missing piece or one that is no number is 0. Always true.
///
///     "10.6.8"  => 10, 6, 8      "10.7"    => 10, 7, 0      "11..2"  => 11, 2, 0
///     ""        => 0, 0, 0       "6.x.1a"  => 6, 0, 1       "1.2.3.4"  => 1, 2, 3
///
/// @param text    ends at its first NUL
/// @param version the numbers
bool utilGetOSVersionFromOSVersionString(std::string text, os_version& version);

/// Compares `major`, then `minor`, then `bugFix`: -1 when `a` is the smaller version, 1 when it is the larger one, 0
/// when they are equal.
int utilCompareOSVersion(os_version& a, os_version& b);

/// Whether the file of the running program holds code for x86-64 or 64-bit PowerPC, the two kinds that are asked for:
/// false for every other processor, a 64-bit ARM too, and for x32. False also when the file cannot be read, as by a
/// process that has no descriptor left for it.
bool utilIs64Bit();

/// Where the volume is mounted that `path` lies on; for a path that does not exist, that of its nearest ancestor that
/// does. Symbolic links are followed, and a bind mount is a mount of its own.
///
/// A path that is not absolute, or that cannot be looked at for another reason than that it, or a folder above it, is
/// missing or too long a name (no permission, a file in the place of a folder, a loop of links), logs the error "Error
/// in getting ... util_getVolumePath" and gives false.
///
///     "/proc/self/no/such"  => "/proc"      "relative/path"  => false
///
/// @param path       an absolute path
/// @param volumePath the mount point, without a trailing slash unless it is "/"
bool util_getVolumePath(const std::string& path, std::string& volumePath);

/// The name of the volume that `path` lies on, in UTF-8. On Linux the label of the file system or, without one that is
/// UTF-8, the last component of the mount point, "/" for the root.
///
/// Warnings are "utilGetVolumeNameOfPath empty path" and "utilGetVolumeNameOfPath failed to get volume path.", the
/// latter behind the error of `util_getVolumePath`; both give false, as does a mount point that is gone by then, of
/// which nothing is said.
///
///     "/media/ann/Back up/notes"  => "Back up"
///
/// @param path       an absolute path; need not exist
/// @param volumeName the name
bool utilGetVolumeNameOfPath(const std::string& path, std::string& volumeName);

/// Whether "name" and "NAME" are two files on the volume of `path`.
///
/// On Linux the file system's type decides (FAT, exFAT, HFS, HFS+ and the older NTFS driver tell no case apart) or,
/// where folders may differ (ext4, f2fs, tmpfs), whether the folder of `path` folds case.
///
/// @param path          must exist
/// @param caseSensitive the answer
/// @return whether the answer was found
bool utilIsDriveCaseSensitive(std::string path, bool& caseSensitive);
