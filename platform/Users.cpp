#include "platform/Users.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/OwnersFolder.h"
#include "platform/Path.h"
#include "platform/Text.h"

namespace platform {
namespace {

struct Account {
  std::string name;
  std::string home;
  gid_t group = 0;
};

// `lookUp` is one of the reentrant look-up functions without its key.
template <typename LookUp>
std::optional<Account> accountBy(LookUp lookUp) {
  constexpr std::size_t kMaxEntrySize = 1 << 20;
  passwd entry{};
  passwd* found = nullptr;
  for (std::vector<char> buffer(1024); buffer.size() <= kMaxEntrySize; buffer.resize(buffer.size() * 2)) {
    const int error = lookUp(&entry, buffer.data(), buffer.size(), &found);
    if (error == ERANGE) continue;
    if (error != 0 || found == nullptr) return std::nullopt;
    return Account{orEmpty(entry.pw_name), orEmpty(entry.pw_dir), entry.pw_gid};
  }
  return std::nullopt;
}

std::optional<Account> accountOf(uid_t user) {
  return accountBy([&](auto... rest) { return ::getpwuid_r(user, rest...); });
}

bool makePrivateFolder(const std::string& path) {
  const OwnersFolder parent(path);
  return parent && (::mkdirat(parent.get(), parent.name().c_str(), 0700) == 0 || errno == EEXIST);
}

// `getGroups` is `getgrouplist`, whose groups are signed numbers on some systems.
template <typename Group>
std::vector<gid_t> groupsOf(const char* user, gid_t group, std::size_t maxCount,
                            int (*getGroups)(const char*, Group, Group*, int*)) {
  // Requests all groups: some user databases return none if the buffer is too small.
  constexpr std::size_t kMaxGroups = 65536;
  for (std::vector<Group> groups(maxCount); groups.size() <= kMaxGroups; groups.resize(groups.size() * 2 + 1)) {
    int count = static_cast<int>(groups.size());
    if (getGroups(user, static_cast<Group>(group), groups.data(), &count) < 0) continue;
    const auto end = groups.begin() + static_cast<std::ptrdiff_t>(std::min(maxCount, static_cast<std::size_t>(count)));
    return {groups.begin(), end};
  }
  return {};
}

}  // namespace

std::string homeFolderOf(const std::string& user) {
  return accountBy([&](auto... rest) { return ::getpwnam_r(user.c_str(), rest...); }).value_or(Account()).home;
}

std::string homeFolderOf(uid_t user) {
  return accountOf(user).value_or(Account()).home;
}

AsUser::AsUser(uid_t user)
    : previous_(::geteuid()),
      changed_(user != previous_ && ::seteuid(user) == 0),
      succeeded_(changed_ || user == previous_) {}

AsUser::~AsUser() {
  if (changed_) (void)!::seteuid(previous_);  // always permitted
}

std::optional<FileRights> fileRightsOf(uid_t user) {
  constexpr std::size_t kMaxGroups = 1024;
  const std::optional<Account> account = accountOf(user);
  if (!account) return std::nullopt;
  return FileRights{user, account->group, groupsOf(account->name.c_str(), account->group, kMaxGroups, ::getgrouplist)};
}

FilesAsUser::FilesAsUser(uid_t user) : previous_(currentFileRights()), succeeded_(user == previous_.user) {
  if (succeeded_) return;
  const std::optional<FileRights> rights = fileRightsOf(user);
  succeeded_ = rights && setFileRights(*rights);
}

FilesAsUser::~FilesAsUser() {
  (void)setFileRights(previous_);  // always permitted
}

std::string homeFolderOfConsoleUser() {
  const AsUser scope(consoleUser().value_or(::geteuid()));
  return homeFolder();
}

std::optional<std::string> makeLogsFolder(const std::string& home) {
  const std::string library = home + "/Library";
  std::string logs = library + "/Logs";
  if (home.empty() || !makePrivateFolder(library) || !makePrivateFolder(logs)) return std::nullopt;
  return logs;
}

std::string expandingTilde(std::string_view path) {
  if (path.substr(0, 1) != "~") return std::string(path);

  const std::string_view user = path.substr(1, path.find('/') - 1);
  const std::string home = user.empty() ? homeFolder() : homeFolderOf(std::string(user));
  if (home.empty()) return std::string(path);
  return appendingPathComponent(home, path.substr(1 + user.size()));
}

std::vector<gid_t> groupsOfLogin(std::size_t maxCount) {
  constexpr std::size_t kMaxNameLength = 256;
  std::array<char, kMaxNameLength + 1> name{};
  if (::getlogin_r(name.data(), name.size()) != 0 || name.front() == '\0') return {};
  return groupsOf(name.data(), ::getegid(), maxCount, ::getgrouplist);
}

std::string nameOfGroup(gid_t group) {
  constexpr std::size_t kMaxEntrySize = std::size_t{1} << 24;  // a group may list many thousands of users
  struct ::group entry {};
  struct ::group* found = nullptr;
  for (std::vector<char> buffer(1024); buffer.size() <= kMaxEntrySize; buffer.resize(buffer.size() * 2)) {
    const int result = ::getgrgid_r(group, &entry, buffer.data(), buffer.size(), &found);
    const int error = result < 0 ? errno : result;  // nss_wrapper returns -1 and sets errno
    if (error == EINTR || error == ERANGE) continue;
    return error == 0 && found != nullptr && entry.gr_name != nullptr ? std::string(entry.gr_name) : std::string();
  }
  return {};
}

}  // namespace platform
