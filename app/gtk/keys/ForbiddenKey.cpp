#include "app/gtk/keys/ForbiddenKey.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace {

// The item "usage page 0xF1D0" of a HID report descriptor (CTAP 2.1, section 11.2.8.1).
constexpr char kUsagePage[] = {'\x06', '\xd0', '\xf1'};

bool isKey(const std::filesystem::path& device) {
  std::ifstream file(device / "device" / "report_descriptor", std::ios::binary);
  const std::string descriptor(std::istreambuf_iterator<char>(file), {});
  return descriptor.find(kUsagePage, 0, sizeof(kUsagePage)) != std::string::npos;
}

}  // namespace

bool hasForbiddenKey(const std::string& devices, const std::string& nodes) {
  std::error_code error;
  for (const auto& each : std::filesystem::directory_iterator(devices, error)) {
    const std::string node = nodes + "/" + each.path().filename().string();
    if (isKey(each.path()) && ::access(node.c_str(), R_OK | W_OK) != 0) return true;
  }
  return false;
}
