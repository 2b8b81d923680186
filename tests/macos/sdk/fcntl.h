// POSIX file control with the extension of macOS.

#pragma once

#include_next <fcntl.h>

#define F_FULLFSYNC 51
