#include "platform/Accounts.h"

#include <grp.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace platform {

std::vector<gid_t> groupsOfLogin(std::size_t most) {
  std::array<char, LOGIN_NAME_MAX + 1> name{};
  if (::getlogin_r(name.data(), name.size()) != 0 || name.front() == '\0') return {};
  // All are asked for first: not every source of users gives a part of them.
  constexpr std::size_t mostAnywhere = 65536;
  for (std::vector<gid_t> groups(most); groups.size() <= mostAnywhere; groups.resize(groups.size() * 2 + 1)) {
    int count = static_cast<int>(groups.size());
    if (::getgrouplist(name.data(), ::getegid(), groups.data(), &count) < 0) continue;
    groups.resize(std::min(most, static_cast<std::size_t>(count)));
    return groups;
  }
  return {};
}

std::string nameOfGroup(gid_t group) {
  constexpr std::size_t largestEntry = std::size_t{1} << 24;  // a group may list every user of a large company
  struct ::group entry {};
  struct ::group* found = nullptr;
  for (std::vector<char> texts(1024); texts.size() <= largestEntry; texts.resize(texts.size() * 2)) {
    const int result = ::getgrgid_r(group, &entry, texts.data(), texts.size(), &found);
    const int error = result < 0 ? errno : result;  // nss_wrapper, which containers use, answers in the other way
    if (error == EINTR || error == ERANGE) continue;
    return error == 0 && found != nullptr && entry.gr_name != nullptr ? std::string(entry.gr_name) : std::string();
  }
  return {};
}

}  // namespace platform
