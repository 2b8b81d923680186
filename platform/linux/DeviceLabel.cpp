#include "platform/linux/DeviceLabel.h"

#include <dirent.h>
#include <sys/stat.h>

#include <charconv>
#include <cstddef>
#include <memory>

namespace platform {

std::string labelOfDevice(dev_t device) {
  const std::unique_ptr<DIR, int (*)(DIR*)> labels(::opendir("/dev/disk/by-label"), ::closedir);
  if (!labels) return {};
  while (const dirent* entry = ::readdir(labels.get())) {
    struct stat item {};
    if (::fstatat(::dirfd(labels.get()), entry->d_name, &item, 0) == 0 && S_ISBLK(item.st_mode) &&
        item.st_rdev == device)
      return labelOfLink(entry->d_name);
  }
  return {};
}

std::string labelOfLink(std::string_view name) {
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
