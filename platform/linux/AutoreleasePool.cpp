#include "platform/AutoreleasePool.h"

namespace platform {

void* openAutoreleasePool() {
  static char token;
  return &token;
}

void closeAutoreleasePool(void* /*pool*/) {}

}  // namespace platform
