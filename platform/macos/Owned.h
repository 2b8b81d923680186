// Owns one reference to a Core Foundation object.
//
//   Owned<CFStringRef>

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
