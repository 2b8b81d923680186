// Marks the declarations that are deprecated on macOS.

#pragma once

#define SDK_DEPRECATED __attribute__((deprecated))
