#include "platform/AutoreleasePool.h"

#import <Foundation/Foundation.h>

namespace platform {

void* openAutoreleasePool() {
  return [[NSAutoreleasePool alloc] init];
}

void closeAutoreleasePool(void* pool) {
  [static_cast<NSAutoreleasePool*>(pool) release];
}

}  // namespace platform
