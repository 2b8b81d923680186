#include "nativeutils/System.h"
