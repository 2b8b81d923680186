#include "platform/UserFolders.h"

#include "platform/PasswordEntry.h"
#include "platform/Path.h"

namespace platform {

std::string homeFolderOf(const std::string& user) {
  return homeFolderBy([&](auto... rest) { return ::getpwnam_r(user.c_str(), rest...); });
}

std::string expandingTilde(std::string_view path) {
  if (path.substr(0, 1) != "~") return std::string(path);

  const std::string_view user = path.substr(1, path.find('/') - 1);
  const std::string home = user.empty() ? homeFolder() : homeFolderOf(std::string(user));
  if (home.empty()) return std::string(path);
  return appendingPathComponent(home, path.substr(1 + user.size()));
}

}  // namespace platform
