// POSIX threads with the extension of macOS.

#pragma once

#include_next <pthread.h>

#include <cstdint>

extern "C" {
int pthread_threadid_np(pthread_t thread, std::uint64_t* id);
}
