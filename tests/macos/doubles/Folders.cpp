// The system's finder of well-known folders. Those of the user are in the home folder that the password database has;
// the others need not be there, and nothing is made of them.

#include <CoreServices/CoreServices.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "tests/macos/doubles/FileManager.h"
#include "tests/macos/doubles/SystemCalls.h"

namespace {

// "root" for the number that stands for these four letters; one that is no ASCII letter is shown as "?".
std::string lettersOf(OSType type) {
  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto letter = static_cast<unsigned char>(type >> shift);
    letters.push_back(letter < 0x80 ? static_cast<char>(letter) : '?');
  }
  return letters;
}

std::string homeOfEffectiveUser() {
  const passwd* const user = ::getpwuid(::geteuid());
  return user == nullptr ? "" : user->pw_dir;
}

bool makeFolder(const std::string& path) {
  return ::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

// "" when there is none.
std::string userFolder(OSType type, bool make) {
  const std::string home = homeOfEffectiveUser();
  if (home.empty() || type == kVolumeRootFolderType) return home;
  if (type != kApplicationSupportFolderType) return "";
  const std::string library = home + "/Library";
  const std::string folder = library + "/Application Support";
  if (make && (!makeFolder(library) || !makeFolder(folder))) return "";
  return folder;
}

std::string sharedFolder(OSType type) {
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

}  // namespace

OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef) {
  doubles::noteCall("FSFindFolder " + std::to_string(vRefNum) + ' ' + lettersOf(folderType) +
                    (createFolder != 0 ? " create" : ""));
  if (const int status = doubles::statusOf("FSFindFolder")) return static_cast<OSErr>(status);
  const std::string path =
      vRefNum == kUserDomain ? userFolder(folderType, createFolder != 0) : sharedFolder(folderType);
  if (path.empty()) return fnfErr;
  *foundRef = doubles::referenceTo(path);
  return noErr;
}
