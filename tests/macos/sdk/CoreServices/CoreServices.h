// The system's C interfaces to files, applications and the machine as their documentation describes them, as far as
// the program uses them. What stands behind them are doubles.

#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/AppleEvents.h>
#include <CoreServices/Debugging.h>
#include <CoreServices/Files.h>
#include <CoreServices/Folders.h>
#include <CoreServices/Gestalt.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacTypes.h>
