// Disables the leak check in a scope. Used for objects that a framework keeps until the process ends.

#pragma once

extern "C" {
// Null without the leak sanitizer.
__attribute__((weak)) void __lsan_disable();
__attribute__((weak)) void __lsan_enable();
}

namespace doubles {

class DisabledLeakCheck {
 public:
  DisabledLeakCheck() {
    if (__lsan_disable != nullptr) __lsan_disable();
  }
  DisabledLeakCheck(const DisabledLeakCheck&) = delete;
  DisabledLeakCheck& operator=(const DisabledLeakCheck&) = delete;
  ~DisabledLeakCheck() {
    if (__lsan_enable != nullptr) __lsan_enable();
  }
};

}  // namespace doubles
