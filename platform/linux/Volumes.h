// Volume labels of udev, for platform/linux.

#pragma once

#include <string>
#include <string_view>

namespace platform {

// Decodes the label from the name of a link in /dev/disk/by-label.
//   "Back\x20up" => "Back up"   "a\x2fb" => "a/b"   "\x2" => "\x2"
std::string decodeLabel(std::string_view name);

}  // namespace platform
