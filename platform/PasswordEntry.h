// Reads the password database.

#pragma once

#include <pwd.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

namespace platform {

// The home folder of the user whom `lookUp` finds, which is one of the reentrant look-ups without its key; "" when
// there is none. Thread-safe.
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

}  // namespace platform
