#include "nativeutils/System.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "applog/Logger.h"
#include "nativeutils/Component.h"
#include "platform/EventLoop.h"
#include "platform/Machine.h"
#include "platform/Path.h"
#include "platform/Users.h"

using nativeutils::kComponent;
using platform::VersionPart;

namespace {

bool isApplication(std::string_view bundle) {
  constexpr std::string_view kExtension = ".app";
  return bundle.size() >= kExtension.size() && bundle.substr(bundle.size() - kExtension.size()) == kExtension;
}

std::optional<std::int64_t> versionPart(VersionPart part, const char* name) {
  const std::optional<int> number = platform::systemVersionPart(part);
  if (number) return *number;
  Logger::getInstance()->logFatal(kComponent, "Unable to retrieve OS %s version", name);
  return std::nullopt;
}

}  // namespace

bool utilIsUserAdmin() {
  constexpr std::size_t kMaxGroups = 16;
  constexpr gid_t kAdminGroup = 80;
  const std::vector<gid_t> groups = platform::groupsOfLogin(kMaxGroups);
  return std::any_of(groups.begin(), groups.end(),
                     [](gid_t group) { return group == kAdminGroup || platform::nameOfGroup(group) == "admin"; });
}

bool utilIsUserRoot() {
  return ::geteuid() == 0;
}

bool utilGetApplicationName(std::string& name) {
  const platform::AutoreleaseScope scope;
  const std::string bundle = platform::bundlePath();
  name = platform::lastPathComponent(isApplication(bundle) ? bundle : platform::executablePath());
  return true;
}

bool utilGetSelfPath(std::string& path) {
  const platform::AutoreleaseScope scope;
  const std::string bundle = platform::bundlePath();
  if (bundle.empty()) return false;
  path = isApplication(bundle) ? platform::deletingLastPathComponent(bundle) : bundle;
  return true;
}

bool utilGetOSLanguage(std::string& /*language*/) {
  return true;
}

bool utilGetCurrentOSVersion(os_version& version) {
  const auto major = versionPart(VersionPart::kMajor, "major");
  if (!major) return false;
  const auto minor = versionPart(VersionPart::kMinor, "minor");
  if (!minor) return false;
  const auto bugFix = versionPart(VersionPart::kBugFix, "bug fix");
  if (!bugFix) return false;

  Logger::getInstance()->logDebug(kComponent, "System OS Version - major = %ld, minor = %ld, bugFix = %ld",
                                  static_cast<long>(*major), static_cast<long>(*minor), static_cast<long>(*bugFix));
  version = {*major, *minor, *bugFix};
  return true;
}

bool utilGetOSVersionFromOSVersionString(std::string text, os_version& version) {
  version = {};
  char* rest = nullptr;
  const char* piece = ::strtok_r(text.data(), ".", &rest);
  for (std::int64_t* number : {&version.major, &version.minor, &version.bugFix}) {
    if (piece == nullptr) break;
    *number = std::strtol(piece, nullptr, 10);
    piece = ::strtok_r(nullptr, ".", &rest);
  }
  return true;
}

int utilCompareOSVersion(os_version& a, os_version& b) {
  const auto numbers = [](const os_version& version) { return std::tie(version.major, version.minor, version.bugFix); };
  if (numbers(a) < numbers(b)) return -1;
  return numbers(b) < numbers(a) ? 1 : 0;
}

bool utilIs64Bit() {
  using platform::Architecture;
  const std::vector<Architecture> all = platform::executableArchitectures();
  return std::any_of(all.begin(), all.end(),
                     [](Architecture item) { return item == Architecture::kX64 || item == Architecture::kPpc64; });
}
