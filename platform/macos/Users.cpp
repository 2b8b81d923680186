#include "platform/Users.h"

#include <CoreServices/CoreServices.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <sys/kauth.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <string>

#include "platform/Text.h"
#include "platform/macos/Owned.h"

namespace platform {
namespace {

using Text = Owned<CFStringRef>;

// Without a user the login window may own the console, in the name of root.
bool isLoginWindow(const Text& name) {
  constexpr char kLoginWindow[] = "loginwindow";
  char text[sizeof kLoginWindow];  // a name that does not fit is a different one
  return CFStringGetCString(name.get(), text, sizeof text, kCFStringEncodingUTF8) &&
         std::strcmp(text, kLoginWindow) == 0;
}

// The Folder Manager and its constants are deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

FSVolumeRefNum volumeOf(FolderDomain domain) {
  switch (domain) {
    case FolderDomain::kUser:
      return kUserDomain;
    case FolderDomain::kLocal:
      return kLocalDomain;
    case FolderDomain::kSystem:
      break;
  }
  return kOnSystemDisk;
}

OSType typeOf(FolderKind kind) {
  switch (kind) {
    case FolderKind::kApplicationSupport:
      return kApplicationSupportFolderType;
    case FolderKind::kApplications:
      return kApplicationsFolderType;
    case FolderKind::kUtilities:
      break;
  }
  return kUtilitiesFolderType;
}

// Creates the folder if it is missing. Thread-safe.
FolderSearch findOrCreate(FSVolumeRefNum domain, OSType kind) {
  using Failure = FolderSearch::Failure;
  FSRef folder = {};
  if (const OSStatus status = FSFindFolder(domain, kind, kCreateFolder, &folder)) return {Failure::kFind, status, ""};
  char path[1024] = {};
  if (const OSStatus status = FSRefMakePath(&folder, reinterpret_cast<UInt8*>(path), sizeof path))
    return {Failure::kPath, status, ""};
  if (!isUtf8(path)) return {Failure::kText, noErr, ""};
  return {Failure::kNone, noErr, path};
}

}  // namespace

std::string homeFolder() {
  return findOrCreate(kUserDomain, kVolumeRootFolderType).path;
}

FolderSearch findFolder(FolderDomain domain, FolderKind kind) {
  return findOrCreate(volumeOf(domain), typeOf(kind));
}

#pragma GCC diagnostic pop

bool isOtherUser(uid_t owner) {
  return owner != 0;
}

FileRights currentFileRights() {
  return {::geteuid(), ::getegid(), {}};
}

// Deprecated without a replacement. The system reduces the groups to the given one.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
bool setFileRights(const FileRights& rights) {
  if (rights.user == 0) return ::pthread_setugid_np(KAUTH_UID_NONE, KAUTH_GID_NONE) == 0;
  return ::pthread_setugid_np(rights.user, rights.group) == 0;
}
#pragma GCC diagnostic pop

std::optional<uid_t> consoleUser() {
  uid_t user = 0;
  const Text name(SCDynamicStoreCopyConsoleUser(nullptr, &user, nullptr));
  if (!name || isLoginWindow(name)) return std::nullopt;
  return user;
}

}  // namespace platform
