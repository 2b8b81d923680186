// Under which name this library's messages stand in the log.

#pragma once

namespace nativeutils {

constexpr const char* kComponent = "Native-Utils";

}  // namespace nativeutils
