// What Linux needs besides platform/Volumes.h: the labels that the device manager has read from disks.

#pragma once

#include <string>
#include <string_view>

namespace platform {

// A name below /dev/disk/by-label as the label that it stands for.
//   "Back\x20up" => "Back up"   "a\x2fb" => "a/b"   "\x2" => "\x2"
std::string decodeLabel(std::string_view name);

}  // namespace platform
