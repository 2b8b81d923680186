// The component of this library's log messages.

#pragma once

namespace nativeutils {

constexpr const char* kComponent = "Native-Utils";

}  // namespace nativeutils
