#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/UserFolders.h"

namespace platform {

std::string homeFolder() {
  constexpr std::size_t largestEntry = 1 << 20;
  passwd entry{};
  passwd* found = nullptr;
  for (std::vector<char> texts(1024); texts.size() <= largestEntry; texts.resize(texts.size() * 2)) {
    const int error = ::getpwuid_r(::geteuid(), &entry, texts.data(), texts.size(), &found);
    if (error == ERANGE) continue;
    return error == 0 && found != nullptr && entry.pw_dir != nullptr ? std::string(entry.pw_dir) : std::string();
  }
  return {};
}

}  // namespace platform
