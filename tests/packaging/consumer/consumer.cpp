// Calls a function of each header. Has its own class Logger and uses templates of the standard library that the library
// also contains.

#include <nativeutils/NativeUtils.h>

#include <cstdio>
#include <iterator>
#include <string>

class Logger {
 public:
  static Logger* getInstance();
  const char* name() const { return "Logger of the consumer"; }
};

Logger* Logger::getInstance() {
  static Logger logger;
  return &logger;
}

int main() {
  utilSetLogLevel(4, "Consumer", nullptr);

  std::string uuid;
  std::string folder;
  std::string home;
  std::string backup;
  std::string encoded;
  os_version version{};
  const std::string text = "foo";
  Base64Encode(text.begin(), text.end(), std::back_inserter(encoded));
  utilGetUUIDString(uuid);
  utilCreateAndGetTempFolderPath(folder);
  utilGetUserFolderPath(home);
  utilBackupFolderIfExits(folder + "/missing", backup, true);
  utilGetOSVersionFromOSVersionString("10.6.8", version);
  utilLaunchApplication(folder + "/missing");
  utilDeleteFolder(folder, false, false);

  const std::string output = std::to_string(uuid.size()) + " " + encoded + " " + std::to_string(version.bugFix) + " " +
                             Logger::getInstance()->name() + "\n" + home;
  std::puts(output.c_str());
}
