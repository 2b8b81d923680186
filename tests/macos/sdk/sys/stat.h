// The file status with the member names of macOS.

#pragma once

#include_next <sys/stat.h>

#define st_atimespec st_atim
#define st_mtimespec st_mtim
