// Owners for what Core Foundation's functions give away.

#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace platform {

struct ReleaseObject {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};
template <typename Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseObject>;

}  // namespace platform
