// The status of a file with the names that its times have on macOS.

#pragma once

#include_next <sys/stat.h>

#define st_atimespec st_atim
#define st_mtimespec st_mtim
