/// @file
/// Includes all headers of the native utility library.

#pragma once

#include "nativeutils/Backup.h"
#include "nativeutils/Base64.h"
#include "nativeutils/Files.h"
#include "nativeutils/Log.h"
#include "nativeutils/Processes.h"
#include "nativeutils/Strings.h"
#include "nativeutils/System.h"
#include "nativeutils/UserFolder.h"
