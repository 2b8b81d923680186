// Threads, with what only macOS tells of them.

#pragma once

#include_next <pthread.h>

#include <cstdint>

extern "C" {
int pthread_threadid_np(pthread_t thread, std::uint64_t* id);
}
