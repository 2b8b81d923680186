#include "platform/Text.h"

#include <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include <string>

#include "platform/EventLoop.h"
#include "platform/macos/Owned.h"

namespace platform {

std::string canonicallyComposed(const char* text) {
  const AutoreleaseScope scope;
  NSString* const composed = [[NSString stringWithUTF8String:text] precomposedStringWithCanonicalMapping];
  const char* const bytes = [composed UTF8String];
  return bytes == nullptr ? text : bytes;
}

std::string randomUuidText() {
  const Owned<CFUUIDRef> uuid(CFUUIDCreate(kCFAllocatorDefault));
  if (!uuid) return "";
  const Owned<CFStringRef> string(CFUUIDCreateString(kCFAllocatorDefault, uuid.get()));
  char text[sizeof "9F0C3B6E-52A1-4D0B-8C57-1E2F6A7B8C9D"];
  if (!string || !CFStringGetCString(string.get(), text, sizeof text, kCFStringEncodingUTF8)) return "";
  return text;
}

}  // namespace platform
