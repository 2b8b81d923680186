#include "platform/Text.h"

#import <Foundation/Foundation.h>

#include "platform/AutoreleasePool.h"

namespace platform {

std::string canonicallyComposed(const char* text) {
  const AutoreleaseScope scope;
  NSString* const composed = [[NSString stringWithUTF8String:text] precomposedStringWithCanonicalMapping];
  const char* const bytes = [composed UTF8String];
  return bytes == nullptr ? text : bytes;
}

}  // namespace platform
