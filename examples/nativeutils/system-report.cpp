// Prints facts about the machine and its user, one per line.

#include <nativeutils/NativeUtils.h>

#include <cstdio>
#include <string>

namespace {

void print(const char* name, const std::string& value) {
  std::printf("%-22s %s\n", name, value.c_str());
}

void print(const char* name, bool value) {
  print(name, std::string(value ? "yes" : "no"));
}

void printFolder(const char* name, bool (*getFolder)(std::string&)) {
  std::string path;
  print(name, getFolder(path) ? path : "unknown");
}

}  // namespace

int main() {
  os_version version{};
  os_version needed = {4, 19, 0};
  if (utilGetCurrentOSVersion(version)) print("version 4.19 or later", utilCompareOSVersion(version, needed) >= 0);
  print("64-bit", utilIs64Bit());
  print("administrator", utilIsUserAdmin());
  print("super-user", utilIsUserRoot());
  printFolder("home", utilGetUserFolderPath);
  printFolder("user data", utilGetUserAppDataFolder);
  printFolder("system data", utilGetSystemApplicationSupportFolderPath);
  printFolder("applications", utilGetApplicationsPath);
  printFolder("shared files", utilGetUSFPath);

  std::string home;
  std::string volume;
  bool caseSensitive = false;
  utilGetUserFolderPath(home);
  if (util_getVolumePath(home, volume)) print("volume of home", volume);
  if (utilIsDriveCaseSensitive(home, caseSensitive)) print("case-sensitive volume", caseSensitive);
  return 0;
}
