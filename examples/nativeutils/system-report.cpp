// Says what an installer wants to know about the machine and its user, a line each.

#include <nativeutils/NativeUtils.h>

#include <cstdio>
#include <string>

namespace {

void say(const char* what, const std::string& answer) {
  std::printf("%-22s %s\n", what, answer.c_str());
}

void say(const char* what, bool answer) {
  say(what, std::string(answer ? "yes" : "no"));
}

void sayFolder(const char* what, bool (*folder)(std::string&)) {
  std::string path;
  say(what, folder(path) ? path : "not known");
}

}  // namespace

int main() {
  os_version version{};
  os_version needed = {4, 19, 0};
  if (utilGetCurrentOSVersion(version)) say("new enough", utilCompareOSVersion(version, needed) >= 0);
  say("64-bit", utilIs64Bit());
  say("administrator", utilIsUserAdmin());
  say("super-user", utilIsUserRoot());
  sayFolder("home", utilGetUserFolderPath);
  sayFolder("the user's data", utilGetUserAppDataFolder);
  sayFolder("the machine's data", utilGetSystemApplicationSupportFolderPath);
  sayFolder("applications", utilGetApplicationsPath);
  sayFolder("shared files go to", utilGetUSFPath);

  std::string home;
  std::string volume;
  bool caseSensitive = false;
  utilGetUserFolderPath(home);
  if (util_getVolumePath(home, volume)) say("volume of the home", volume);
  if (utilIsDriveCaseSensitive(home, caseSensitive)) say("its names' case counts", caseSensitive);
  return 0;
}
