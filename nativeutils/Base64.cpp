#include "nativeutils/Base64.h"
