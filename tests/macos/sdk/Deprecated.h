// Marks what newer systems warn of, as their own headers do.

#pragma once

#define SDK_DEPRECATED __attribute__((deprecated))
