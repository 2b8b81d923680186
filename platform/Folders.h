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

#pragma once

#include <string>

namespace platform {

enum class FolderDomain { user, local, system };
enum class FolderKind { applicationSupport, applications, utilities };

struct FolderSearch {
  // The first step that failed: finding the folder (or making it, when it was missing), making a path of at most 1023
  // bytes from it, or making text from that path.
  enum class Failure { none, find, path, text };

  Failure failure = Failure::none;
  int status = 0;    // the system's number for a failure of `find` or `path`: an `errno`, on macOS an `OSStatus`
  std::string path;  // also after a failure where the folder should be, as far as that is known; else ""
};

// Makes the folder and those above it if they are missing. A domain that does not have the kind: `find`, ENOENT.
FolderSearch findFolder(FolderDomain domain, FolderKind kind);

}  // namespace platform
