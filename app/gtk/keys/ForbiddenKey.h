// Finds a security key that this user may not open, which libfido2 does not report.

#pragma once

#include <string>

// Whether one of the HID devices that `devices` describes is a security key whose node in `nodes` cannot be opened for
// reading and writing.
bool hasForbiddenKey(const std::string& devices = "/sys/class/hidraw", const std::string& nodes = "/dev");
