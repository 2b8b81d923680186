// Replaces an installed folder by a new one. The installed folder is backed up and, if the new one cannot be renamed,
// restored.
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

  std::string backup;  // remains empty if nothing is installed
  if (!utilBackupFolderIfExits(installed, backup, false)) {
    std::fprintf(stderr, "cannot back up %s\n", installed.c_str());
    return 1;
  }
  if (!utilRenamePathToPath(fresh, installed)) {
    std::fprintf(stderr, "cannot rename %s to %s\n", fresh.c_str(), installed.c_str());
    if (!backup.empty() && !utilRestoreFolder(backup, installed))
      std::fprintf(stderr, "cannot restore %s; the backup is %s\n", installed.c_str(), backup.c_str());
    return 1;
  }
  if (!utilDeleteFolder(backup, false, false)) std::fprintf(stderr, "cannot delete the backup %s\n", backup.c_str());
  std::printf("replaced %s\n", installed.c_str());
  return 0;
}
