#include "platform/Folders.h"

#include "platform/macos/FolderFinder.h"

namespace platform {
namespace {

FSVolumeRefNum numberOf(FolderDomain domain) {
  switch (domain) {
    case FolderDomain::user:
      return kUserDomain;
    case FolderDomain::local:
      return kLocalDomain;
    case FolderDomain::system:
      break;
  }
  return kOnSystemDisk;
}

OSType typeOf(FolderKind kind) {
  switch (kind) {
    case FolderKind::applicationSupport:
      return kApplicationSupportFolderType;
    case FolderKind::applications:
      return kApplicationsFolderType;
    case FolderKind::utilities:
      break;
  }
  return kUtilitiesFolderType;
}

}  // namespace

FolderSearch findFolder(FolderDomain domain, FolderKind kind) {
  return folderOf(numberOf(domain), typeOf(kind));
}

}  // namespace platform
