// The labels that the device manager has read from disks.

#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace platform {

// "" for a device without one.
std::string labelOfDevice(dev_t device);

// A name below /dev/disk/by-label as the label that it stands for.
//   "Back\x20up" => "Back up"   "a\x2fb" => "a/b"   "\x2" => "\x2"
std::string labelOfLink(std::string_view name);

}  // namespace platform
