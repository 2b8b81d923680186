#include "nativeutils/Processes.h"
