#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/UserFolders.h"

namespace platform {
namespace {

// `lookUp` is one of the reentrant look-ups of the password database without its key.
template <typename LookUp>
std::string homeFolderBy(LookUp lookUp) {
  constexpr std::size_t largestEntry = 1 << 20;
  passwd entry{};
  passwd* found = nullptr;
  for (std::vector<char> texts(1024); texts.size() <= largestEntry; texts.resize(texts.size() * 2)) {
    const int error = lookUp(&entry, texts.data(), texts.size(), &found);
    if (error == ERANGE) continue;
    return error == 0 && found != nullptr && entry.pw_dir != nullptr ? std::string(entry.pw_dir) : std::string();
  }
  return {};
}

}  // namespace

std::string homeFolder() {
  return homeFolderBy([](auto... rest) { return ::getpwuid_r(::geteuid(), rest...); });
}

std::string homeFolderOf(const std::string& user) {
  return homeFolderBy([&](auto... rest) { return ::getpwnam_r(user.c_str(), rest...); });
}

}  // namespace platform
