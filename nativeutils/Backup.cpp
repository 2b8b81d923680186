#include "nativeutils/Backup.h"
