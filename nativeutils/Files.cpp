#include "nativeutils/Files.h"
