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
#include "platform/linux/Glib.h"
#include "platform/linux/Volumes.h"

namespace platform {
namespace {

// Identifies a mount. The device number alone is the same for all its bind mounts.
struct Mount {
  unsigned major = 0;
  unsigned minor = 0;
  std::uint64_t id = 0;  // 0 on kernels before 5.8

  bool operator==(const Mount& other) const { return major == other.major && minor == other.minor && id == other.id; }
};

std::optional<Mount> mountOf(const char* path) {
  struct statx item {};
  if (::statx(AT_FDCWD, path, 0, STATX_MNT_ID, &item) != 0) return std::nullopt;
  const bool hasId = (item.stx_mask & STATX_MNT_ID) != 0;
  return Mount{item.stx_dev_major, item.stx_dev_minor, hasId ? item.stx_mnt_id : 0};
}

std::optional<std::string> resolveLinks(const std::string& path) {
  const Owned<char, std::free> real(::realpath(path.c_str(), nullptr));
  if (!real) return std::nullopt;
  return std::string(real.get());
}

UniqueFd openFolder(const std::string& path) {
  return UniqueFd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
}

// Returns the label that the file system reports; "" if it does not support that.
std::string fileSystemLabel(const std::string& mountPoint) {
  const UniqueFd folder = openFolder(mountPoint);
  std::array<char, FSLABEL_MAX + 1> label{};
  if (!folder || ::ioctl(folder.get(), FS_IOC_GETFSLABEL, label.data()) != 0) return {};
  return label.data();
}

// Returns the label that udev read from the device; "" for a device without a label.
std::string udevLabel(dev_t device) {
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

bool isCaseInsensitiveType(std::uint64_t type) {
  constexpr std::uint64_t kExfat = 0x2011bab0, kHfs = 0x4244, kHfsPlus = 0x482b,
                          kNtfs = 0x5346544e;  // not in any header
  constexpr std::array<std::uint64_t, 5> kTypes = {MSDOS_SUPER_MAGIC, kExfat, kHfs, kHfsPlus, kNtfs};
  return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

bool isCaseFoldedFolder(const std::string& path) {
  UniqueFd folder = openFolder(path);
  if (!folder && errno == ENOTDIR) {
    const std::optional<std::string> real = resolveLinks(path);
    if (real) folder = openFolder(deletingLastPathComponent(*real));
  }
  int flags = 0;
  return folder && ::ioctl(folder.get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_CASEFOLD_FL) != 0;
}

}  // namespace

std::optional<std::string> mountPointOf(const std::string& path) {
  // Mounts a file system of the automounter, which the calls below do not.
  struct statfs system {};
  while (::statfs(path.c_str(), &system) != 0) {
    if (errno != EINTR) return std::nullopt;
  }
  std::optional<std::string> folder = resolveLinks(path);
  if (!folder) return std::nullopt;
  const std::optional<Mount> mount = mountOf(folder->c_str());
  if (!mount) return std::nullopt;
  // Walks up to the topmost folder of the mount. The list of mounts may be hidden from the process.
  while (*folder != "/") {
    std::string parent = deletingLastPathComponent(*folder);
    if (!(mountOf(parent.c_str()) == mount)) break;
    folder = std::move(parent);
  }
  return folder;
}

std::optional<std::string> volumeNameOf(const std::string& mountPoint) {
  struct stat item {};
  if (::stat(mountPoint.c_str(), &item) != 0 || !S_ISDIR(item.st_mode)) return std::nullopt;
  for (const std::string& label : {fileSystemLabel(mountPoint), udevLabel(item.st_dev)}) {
    if (!label.empty() && isUtf8(label)) return label;
  }
  return lastPathComponent(mountPoint);
}

std::optional<bool> isCaseSensitive(const std::string& path) {
  struct statfs system {};
  while (::statfs(path.c_str(), &system) != 0) {
    if (errno != EINTR) return std::nullopt;
  }
  return !isCaseInsensitiveType(static_cast<std::uint64_t>(system.f_type)) && !isCaseFoldedFolder(path);
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
