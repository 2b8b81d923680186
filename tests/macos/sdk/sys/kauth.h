// The ids that end the identity of a thread.

#pragma once

#include <sys/types.h>

#define KAUTH_UID_NONE (~(uid_t)0 - 100)
#define KAUTH_GID_NONE (~(gid_t)0 - 100)
