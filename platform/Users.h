// Users of the machine: the console user, home folders, groups, and the folders that belong to a user or to all users.
//
// - Home folders come from the system's user database, never from the environment, which a launcher may have changed.
// - Thread-safe, except `AsUser` and what uses it.

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// The user whose session is on the screen of the first seat, on macOS at the console; nothing when no user is logged in
// there.
std::optional<uid_t> consoleUser();

// The home folder of the effective user, as the password database has it; "" when it has none. On macOS as the folder
// finder (`FSFindFolder`) has it; "" when its path has more than 1023 bytes.
std::string homeFolder();

// The home folder of the user with this login name, as the password database has it; "" when it has none.
std::string homeFolderOf(const std::string& user);
std::string homeFolderOf(uid_t user);

// Gives the whole process another effective user id for the length of a scope. Nothing that depends on the effective
// user id may run in parallel. Changes nothing when the process already has that id, or may not take it.
class AsUser {
 public:
  explicit AsUser(uid_t user);
  AsUser(const AsUser&) = delete;
  AsUser& operator=(const AsUser&) = delete;
  ~AsUser();

  // Whether the effective user id is the requested one.
  explicit operator bool() const { return succeeded_; }

 private:
  uid_t former_;
  bool changed_;
  bool succeeded_;
};

// The home folder of the console user; of the effective user when there is no console user or the process may not
// become that user. Uses `AsUser`.
std::string homeFolderOfConsoleUser();

// The path of "Library/Logs" in a home folder. Creates missing folders with mode 0700; no value when one cannot be
// created or `home` is empty.
std::optional<std::string> makeLogsFolder(const std::string& home);

// A first component "~" stands for the home folder of the effective user, "~name" for that user's; the result then
// comes without a trailing slash. A path that begins otherwise, or whose home folder is not known, stays as it is.
//   "~" => "/home/ann"   "~/new/" => "/home/ann/new"   "~bob/x" => "/home/bob/x"
//   "~nobody-such/x/" => "~nobody-such/x/"   "/tmp/~" => "/tmp/~"
std::string expandingTilde(std::string_view path);

// The effective group, then the others that the login name is a member of, `most` at most. Empty when the process does
// not belong to a login: on Linux services, containers and scheduled programs.
std::vector<gid_t> groupsOfLogin(std::size_t most);

// "" for a group that has no name.
std::string nameOfGroup(gid_t group);

// Where a system keeps what programs bring along, by the domain that it is for.
//
// On Linux:
//   user    applicationSupport   $XDG_DATA_HOME, or ".local/share" in the effective user's home folder (XDG base
//                                directories; a relative XDG_DATA_HOME counts as none); made with mode 0700
//   local   applicationSupport   "/usr/local/share" (FHS 4.9: data of what this machine's administrator installed)
//   local   applications         "/opt" (FHS 3.13: add-on packages, a folder each)
//   local   utilities            "/opt" too: nothing on Linux parts tools from other add-on packages
//   system  applicationSupport   "/usr/share" (FHS 4.11: data of the system's own packages)
//
// On macOS what its folder finder (`FSFindFolder`) gives, local: "/Library/Application Support", "/Applications" and
// "/Applications/Utilities".

enum class FolderDomain { kUser, kLocal, kSystem };
enum class FolderKind { kApplicationSupport, kApplications, kUtilities };

struct FolderSearch {
  // The first step that failed: finding the folder (or making it, when it was missing), making a path of at most 1023
  // bytes from it, or making text from that path.
  enum class Failure { kNone, kFind, kPath, kText };

  Failure failure = Failure::kNone;
  int status = 0;    // the system's number for a failure of `find` or `path`: an `errno`, on macOS an `OSStatus`
  std::string path;  // also after a failure where the folder should be, as far as that is known; else ""
};

// Makes the folder and those above it if they are missing. A domain that does not have the kind: `find`, ENOENT.
FolderSearch findFolder(FolderDomain domain, FolderKind kind);

}  // namespace platform
