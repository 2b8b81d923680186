// The console user, the well-known folders and the identity of a thread.
//
// - The user's folders are in the home folder from the password database.
// - The folders of the other domains are only names: they need not exist and are not created.

#include "tests/macos/doubles/Users.h"

#include <CoreServices/CoreServices.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <pwd.h>
#include <sys/fsuid.h>
#include <sys/kauth.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "tests/macos/doubles/CoreFoundation.h"
#include "tests/macos/doubles/FileManager.h"
#include "tests/macos/doubles/SystemDoubles.h"

namespace {

std::string homeOfEffectiveUser() {
  const passwd* const user = ::getpwuid(::geteuid());
  return user == nullptr ? "" : user->pw_dir;
}

bool makeFolder(const std::string& path) {
  return ::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

// Returns "" if the folder does not exist.
std::string userFolder(OSType type, bool create) {
  const std::string home = homeOfEffectiveUser();
  if (home.empty() || type == kVolumeRootFolderType) return home;
  if (type != kApplicationSupportFolderType) return "";
  const std::string library = home + "/Library";
  const std::string folder = library + "/Application Support";
  if (create && (!makeFolder(library) || !makeFolder(folder))) return "";
  return folder;
}

std::string localFolder(OSType type) {
  switch (type) {
    case kApplicationSupportFolderType:
      return "/Library/Application Support";
    case kApplicationsFolderType:
      return "/Applications";
    case kUtilitiesFolderType:
      return "/Applications/Utilities";
    default:
      return "";
  }
}

std::string folderOf(FSVolumeRefNum domain, OSType type, bool create) {
  switch (domain) {
    case kUserDomain:
      return userFolder(type, create);
    case kLocalDomain:
      return localFolder(type);
    case kOnSystemDisk:
      return "/System" + localFolder(type);
    default:
      return "";
  }
}

}  // namespace

CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef, uid_t* uid, gid_t*) {
  if (!doubles::consoleUser) return nullptr;
  if (uid != nullptr) *uid = doubles::consoleUser->id;
  return doubles::createString(doubles::consoleUser->name);
}

OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef) {
  if (const int status = doubles::statusOf("FSFindFolder")) return static_cast<OSErr>(status);
  const std::string path = folderOf(vRefNum, folderType, createFolder != 0);
  if (path.empty()) return fnfErr;
  *foundRef = doubles::referenceTo(path);
  return noErr;
}

int pthread_setugid_np(uid_t user, gid_t group) {
  const bool isReset = user == KAUTH_UID_NONE;
  const uid_t newUser = isReset ? ::geteuid() : user;
  const gid_t newGroup = isReset ? ::getegid() : group;
  (void)::syscall(SYS_setgroups, 1, &newGroup);
  (void)::setfsgid(newGroup);
  (void)::setfsuid(newUser);
  return static_cast<uid_t>(::setfsuid(static_cast<uid_t>(-1))) == newUser ? 0 : -1;
}
