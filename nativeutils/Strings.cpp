#include "nativeutils/Strings.h"
