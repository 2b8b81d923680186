// The C interfaces to files, applications and the machine that the program uses, as documented. tests/macos/doubles
// implements them.

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
