// Users of the machine: console user, home folders, groups, and standard folders.
//
// - Home folders come from the user database, not from the environment, because a launcher may have changed it.
// - Thread-safe, except `AsUser` and `homeFolderOfConsoleUser`.

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// Returns the user of the active session of the first seat (macOS: at the console); no value if no user is logged in
// there.
std::optional<uid_t> consoleUser();

// Returns the home folder of the effective user; "" if there is none.
//
// - Linux: from the password database.
// - macOS: from `FSFindFolder`; "" if the path has more than 1023 bytes.
std::string homeFolder();

// Returns the home folder of a user from the password database; "" if there is none.
std::string homeFolderOf(const std::string& user);
std::string homeFolderOf(uid_t user);

// Changes the effective user id of the process for a scope.
//
// - Affects all threads: no code that depends on the effective user id may run at the same time.
// - Changes nothing if the process already has that id or is not permitted to take it.
class AsUser {
 public:
  explicit AsUser(uid_t user);
  AsUser(const AsUser&) = delete;
  AsUser& operator=(const AsUser&) = delete;
  ~AsUser();

  // Returns whether the effective user id is the requested one.
  explicit operator bool() const { return succeeded_; }

 private:
  uid_t previous_;
  bool changed_;
  bool succeeded_;
};

// Returns whether a super-user's process that works in files of this owner works in another user's files. False for an
// owner that is unknown to the user namespace of the process.
bool isOtherUser(uid_t owner);

// The user and the groups that decide about access to files.
struct FileRights {
  uid_t user;
  gid_t group;
  std::vector<gid_t> groups;
};

// Returns the rights of a user of the password database.
std::optional<FileRights> fileRightsOf(uid_t user);

// Gives the calling thread the file rights of a user, for a scope. For a super-user's process.
//
// - Other threads keep their rights; a thread that is started in the scope gets the user's.
// - Linux: does not change the effective user id, so that the user gets no access to the process.
class FilesAsUser {
 public:
  explicit FilesAsUser(uid_t user);
  FilesAsUser(const FilesAsUser&) = delete;
  FilesAsUser& operator=(const FilesAsUser&) = delete;
  ~FilesAsUser();

  // Returns whether the thread has exactly these rights.
  explicit operator bool() const { return succeeded_; }

 private:
  FileRights previous_;
  bool succeeded_;
};

// The functions below are implemented per system.

// Returns the rights of the calling thread.
FileRights currentFileRights();

// Changes the rights of the calling thread. Returns false if it has not got all of them.
bool setFileRights(const FileRights& rights);

// Returns the home folder of the console user; of the effective user if there is no console user or the process is not
// permitted to become that user. Uses `AsUser`.
std::string homeFolderOfConsoleUser();

// Creates the folder "Library/Logs" in a home folder and returns its path. Missing folders get mode 0700. Returns no
// value if one cannot be created or `home` is empty. Uses `OwnersFolder`: another user's folders are created as that
// user and not through links.
std::optional<std::string> makeLogsFolder(const std::string& home);

// Replaces a first component "~" by the home folder of the effective user and "~name" by the home folder of that user,
// and then removes trailing slashes. Any other path, and one whose home folder is unknown, is returned unchanged.
//   "~" => "/home/ann"   "~/new/" => "/home/ann/new"   "~bob/x" => "/home/bob/x"
//   "~unknown/x/" => "~unknown/x/"   "/tmp/~" => "/tmp/~"
std::string expandingTilde(std::string_view path);

// Returns the effective group, then the other groups of the login name; at most `maxCount`. Empty if the process does
// not belong to a login, such as services, containers and scheduled programs on Linux.
std::vector<gid_t> groupsOfLogin(std::size_t maxCount);

// Returns "" for a group without a name.
std::string nameOfGroup(gid_t group);

// Standard folders for program data and applications, by domain.
//
// On Linux:
//   kUser   kApplicationSupport  $XDG_DATA_HOME, or ".local/share" in the effective user's home folder (XDG base
//                                directories; a relative XDG_DATA_HOME is ignored); created with mode 0700
//   kLocal  kApplicationSupport  "/usr/local/share" (FHS 4.9: data that the administrator installed)
//   kLocal  kApplications        "/opt" (FHS 3.13: add-on packages, one folder each)
//   kLocal  kUtilities           "/opt": Linux has no separate folder for utilities
//   kSystem kApplicationSupport  "/usr/share" (FHS 4.11: data of the system's packages)
//
// On macOS the results of `FSFindFolder`; in the local domain "/Library/Application Support", "/Applications" and
// "/Applications/Utilities".

enum class FolderDomain { kUser, kLocal, kSystem };
enum class FolderKind { kApplicationSupport, kApplications, kUtilities };

struct FolderSearch {
  // The step that failed.
  enum class Failure {
    kNone,
    kFind,  // finding or creating the folder
    kPath,  // getting a path of at most 1023 bytes
    kText,  // converting the path to UTF-8
  };

  Failure failure = Failure::kNone;
  int status = 0;    // of `kFind` and `kPath`: an `errno`, on macOS an `OSStatus`
  std::string path;  // after a failure the expected path if it is known, else ""
};

// Finds a folder, and creates it with its missing parents. A domain without that kind of folder: `kFind`, ENOENT.
FolderSearch findFolder(FolderDomain domain, FolderKind kind);

}  // namespace platform
