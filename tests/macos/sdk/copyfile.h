// `fcopyfile` with the flags of macOS.

#pragma once

#include <cstdint>

using copyfile_state_t = struct _copyfile_state*;
using copyfile_flags_t = std::uint32_t;

#define COPYFILE_ACL (1 << 0)
#define COPYFILE_STAT (1 << 1)
#define COPYFILE_XATTR (1 << 2)
#define COPYFILE_DATA (1 << 3)

extern "C" {
int fcopyfile(int from_fd, int to_fd, copyfile_state_t state, copyfile_flags_t flags);
}
