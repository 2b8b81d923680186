// A scope in which nothing is looked for as a leak: what an application makes at its start, and from its interface
// file, it keeps until its process ends.

#pragma once

extern "C" {
// Of the leak sanitizer; null without it.
__attribute__((weak)) void __lsan_disable();
__attribute__((weak)) void __lsan_enable();
}

namespace doubles {

class Uncounted {
 public:
  Uncounted() {
    if (__lsan_disable != nullptr) __lsan_disable();
  }
  Uncounted(const Uncounted&) = delete;
  Uncounted& operator=(const Uncounted&) = delete;
  ~Uncounted() {
    if (__lsan_enable != nullptr) __lsan_enable();
  }
};

}  // namespace doubles
