#include "platform/Accounts.h"

#include <grp.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace platform {
namespace {

// `ask` is `getgrouplist`, to which a group is a signed number on some systems.
template <typename Group>
std::vector<gid_t> groupsOf(const char* user, std::size_t most, int (*ask)(const char*, Group, Group*, int*)) {
  // All are asked for first: not every source of users gives a part of them.
  constexpr std::size_t mostAnywhere = 65536;
  for (std::vector<Group> groups(most); groups.size() <= mostAnywhere; groups.resize(groups.size() * 2 + 1)) {
    int count = static_cast<int>(groups.size());
    if (ask(user, static_cast<Group>(::getegid()), groups.data(), &count) < 0) continue;
    const auto given = groups.begin() + static_cast<std::ptrdiff_t>(std::min(most, static_cast<std::size_t>(count)));
    return {groups.begin(), given};
  }
  return {};
}

}  // namespace

std::vector<gid_t> groupsOfLogin(std::size_t most) {
  constexpr std::size_t longestName = 256;
  std::array<char, longestName + 1> name{};
  if (::getlogin_r(name.data(), name.size()) != 0 || name.front() == '\0') return {};
  return groupsOf(name.data(), most, ::getgrouplist);
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
