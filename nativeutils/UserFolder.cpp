#include "nativeutils/UserFolder.h"

#include <string>

#include "platform/Users.h"

bool util_getUserFolderPath(std::string& path) {
  path = platform::homeFolder();
  return true;
}

bool utilGetUserFolderPath(std::string& path) {
  path = platform::homeFolderOfConsoleUser();
  return true;
}
