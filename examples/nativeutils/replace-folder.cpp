// Puts a new folder in the place of an installed one. The old one is kept aside until the new one stands, and comes
// back when it does not.
//
//   replace-folder NEW INSTALLED

#include <nativeutils/NativeUtils.h>

#include <cstdio>
#include <string>

int main(int count, char** arguments) {
  if (count != 3) {
    std::fputs("usage: replace-folder NEW INSTALLED\n", stderr);
    return 2;
  }
  const std::string fresh = arguments[1];
  const std::string installed = arguments[2];
  utilSetLogLevel(4, "replace-folder", nullptr);

  std::string backup;  // stays empty when nothing is installed yet
  if (!utilBackupFolderIfExits(installed, backup, false)) {
    std::fprintf(stderr, "%s could not be put aside\n", installed.c_str());
    return 1;
  }
  if (!utilRenamePathToPath(fresh, installed)) {
    std::fprintf(stderr, "%s could not be put in place\n", fresh.c_str());
    if (!backup.empty() && !utilRestoreFolder(backup, installed))
      std::fprintf(stderr, "the old folder is still at %s\n", backup.c_str());
    return 1;
  }
  if (!utilDeleteFolder(backup, false, false)) std::fprintf(stderr, "%s is left over\n", backup.c_str());
  std::printf("%s is new\n", installed.c_str());
  return 0;
}
