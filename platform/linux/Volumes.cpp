#include "platform/Volumes.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/Path.h"
#include "platform/Text.h"
#include "platform/UniqueFd.h"
#include "platform/linux/Volumes.h"

namespace platform {
namespace {

// One mount among all; the device alone is the same for all bind mounts of it.
struct Mount {
  unsigned major = 0;
  unsigned minor = 0;
  std::uint64_t id = 0;  // 0 where the kernel (before 5.8) does not tell

  bool operator==(const Mount& other) const { return major == other.major && minor == other.minor && id == other.id; }
};

std::optional<Mount> mountOf(const char* path) {
  struct statx item {};
  if (::statx(AT_FDCWD, path, 0, STATX_MNT_ID, &item) != 0) return std::nullopt;
  const bool knowsId = (item.stx_mask & STATX_MNT_ID) != 0;
  return Mount{item.stx_dev_major, item.stx_dev_minor, knowsId ? item.stx_mnt_id : 0};
}

std::optional<std::string> withoutLinks(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  if (!real) return std::nullopt;
  return std::string(real.get());
}

UniqueFd openFolder(const std::string& path) {
  return UniqueFd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
}

// What the file system itself says; "" where it does not.
std::string ownLabel(const std::string& mountPoint) {
  const UniqueFd folder = openFolder(mountPoint);
  std::array<char, FSLABEL_MAX + 1> label{};
  if (!folder || ::ioctl(folder.get(), FS_IOC_GETFSLABEL, label.data()) != 0) return {};
  return label.data();
}

// What the device manager has read from the disk; "" for a device without a label.
std::string labelOfDevice(dev_t device) {
  const std::unique_ptr<DIR, int (*)(DIR*)> labels(::opendir("/dev/disk/by-label"), ::closedir);
  if (!labels) return {};
  while (const dirent* entry = ::readdir(labels.get())) {
    struct stat item {};
    if (::fstatat(::dirfd(labels.get()), entry->d_name, &item, 0) == 0 && S_ISBLK(item.st_mode) &&
        item.st_rdev == device)
      return decodeLabel(entry->d_name);
  }
  return {};
}

bool knowsNoCase(std::uint64_t type) {
  constexpr std::uint64_t exfat = 0x2011bab0, hfs = 0x4244, hfsPlus = 0x482b, ntfs = 0x5346544e;  // in no header
  constexpr std::array<std::uint64_t, 5> types = {MSDOS_SUPER_MAGIC, exfat, hfs, hfsPlus, ntfs};
  return std::find(types.begin(), types.end(), type) != types.end();
}

bool foldsCase(const std::string& path) {
  UniqueFd folder = openFolder(path);
  if (!folder && errno == ENOTDIR) {
    const std::optional<std::string> real = withoutLinks(path);
    if (real) folder = openFolder(deletingLastPathComponent(*real));
  }
  int flags = 0;
  return folder && ::ioctl(folder.get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_CASEFOLD_FL) != 0;
}

}  // namespace

std::optional<std::string> mountPointOf(const std::string& path) {
  // Unlike the calls below it wakes a file system that is mounted on demand.
  struct statfs system {};
  while (::statfs(path.c_str(), &system) != 0) {
    if (errno != EINTR) return std::nullopt;
  }
  std::optional<std::string> place = withoutLinks(path);
  if (!place) return std::nullopt;
  const std::optional<Mount> mount = mountOf(place->c_str());
  if (!mount) return std::nullopt;
  // The topmost folder of the mount is where it is mounted. No list of mounts is needed, which a process may not see.
  while (*place != "/") {
    std::string above = deletingLastPathComponent(*place);
    if (!(mountOf(above.c_str()) == mount)) break;
    place = std::move(above);
  }
  return place;
}

std::optional<std::string> volumeNameOf(const std::string& mountPoint) {
  struct stat item {};
  if (::stat(mountPoint.c_str(), &item) != 0 || !S_ISDIR(item.st_mode)) return std::nullopt;
  for (const std::string& label : {ownLabel(mountPoint), labelOfDevice(item.st_dev)}) {
    if (!label.empty() && isUtf8(label)) return label;
  }
  return lastPathComponent(mountPoint);
}

std::optional<bool> isCaseSensitive(const std::string& path) {
  struct statfs system {};
  while (::statfs(path.c_str(), &system) != 0) {
    if (errno != EINTR) return std::nullopt;
  }
  return !knowsNoCase(static_cast<std::uint64_t>(system.f_type)) && !foldsCase(path);
}

std::string decodeLabel(std::string_view name) {
  std::string label;
  for (std::size_t i = 0; i < name.size(); ++i) {
    unsigned char byte = 0;
    const char* const digits = name.data() + i + 2;
    if (name.substr(i, 2) == "\\x" && i + 4 <= name.size() &&
        std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      label.push_back(static_cast<char>(byte));
      i += 3;
    } else {
      label.push_back(name[i]);
    }
  }
  return label;
}

}  // namespace platform
