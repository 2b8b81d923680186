#include "platform/Users.h"

#include <CoreServices/CoreServices.h>
#include <SystemConfiguration/SystemConfiguration.h>

#include <cstring>
#include <optional>
#include <string>

#include "platform/Text.h"
#include "platform/macos/Owned.h"

namespace platform {
namespace {

using Text = Owned<CFStringRef>;

// While nobody is logged in the login window may have the screen, in the super-user's name.
bool isLoginWindow(const Text& name) {
  constexpr char kLoginWindow[] = "loginwindow";
  char text[sizeof kLoginWindow];  // what does not fit is another name
  return CFStringGetCString(name.get(), text, sizeof text, kCFStringEncodingUTF8) &&
         std::strcmp(text, kLoginWindow) == 0;
}

FSVolumeRefNum numberOf(FolderDomain domain) {
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

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
// The folder of this kind in this domain, made when it is missing. Thread-safe.
FolderSearch folderOf(FSVolumeRefNum domain, OSType kind) {
  using Failure = FolderSearch::Failure;
  FSRef folder = {};
  if (const OSStatus status = FSFindFolder(domain, kind, kCreateFolder, &folder)) return {Failure::kFind, status, ""};
  char path[1024] = {};
  if (const OSStatus status = FSRefMakePath(&folder, reinterpret_cast<UInt8*>(path), sizeof path))
    return {Failure::kPath, status, ""};
  if (!isUtf8(path)) return {Failure::kText, noErr, ""};
  return {Failure::kNone, noErr, path};
}
#pragma GCC diagnostic pop

}  // namespace

std::optional<uid_t> consoleUser() {
  uid_t user = 0;
  const Text name(SCDynamicStoreCopyConsoleUser(nullptr, &user, nullptr));
  if (!name || isLoginWindow(name)) return std::nullopt;
  return user;
}

std::string homeFolder() {
  return folderOf(kUserDomain, kVolumeRootFolderType).path;
}

FolderSearch findFolder(FolderDomain domain, FolderKind kind) {
  return folderOf(numberOf(domain), typeOf(kind));
}

}  // namespace platform
