#include "tests/macos/doubles/CoreFoundation.h"

#import <Foundation/Foundation.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <mutex>

#include "tests/macos/doubles/SystemDoubles.h"

namespace doubles {
namespace {

std::mutex mutex;
std::multimap<CFTypeRef, std::string> types;  // of the unreleased objects

std::string removeType(CFTypeRef object) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto entry = types.find(object);
  if (entry == types.end()) return "object that is not owned";
  std::string type = entry->second;
  types.erase(entry);
  return type;
}

}  // namespace

CFTypeRef createdObject(CFTypeRef object, const std::string& type) {
  objectCreated(type);
  const std::lock_guard<std::mutex> lock(mutex);
  types.emplace(object, type);
  return object;
}

CFStringRef createString(const std::string& text) {
  NSString* const string = [[NSString alloc] initWithUTF8String:text.c_str()];
  return string == nil ? nullptr : static_cast<CFStringRef>(createdObject(string, "CFString"));
}

}  // namespace doubles

const CFAllocatorRef kCFAllocatorDefault = nullptr;

namespace {

// Core Foundation aborts if an argument is null.
void requireObject(CFTypeRef object) {
  if (object == nullptr) std::abort();
}

// GNUstep's own random UUIDs have no version number.
NSUUID* randomUuid() {
  unsigned char bytes[16];
  if (::getentropy(bytes, sizeof bytes) != 0) return nil;
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  return [[NSUUID alloc] initWithUUIDBytes:bytes];
}

}  // namespace

void CFRelease(CFTypeRef object) {
  requireObject(object);
  doubles::objectReleased(doubles::removeType(object));
  [static_cast<id>(const_cast<void*>(object)) release];
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
  requireObject(string);
  if (encoding != kCFStringEncodingUTF8) return 0;
  NSString* const text = static_cast<id>(const_cast<void*>(static_cast<CFTypeRef>(string)));
  return [text getCString:buffer maxLength:static_cast<NSUInteger>(bufferSize) encoding:NSUTF8StringEncoding] ? 1 : 0;
}

CFUUIDRef CFUUIDCreate(CFAllocatorRef) {
  if (doubles::statusOf("CFUUIDCreate") != 0) return nullptr;
  return static_cast<CFUUIDRef>(doubles::createdObject(randomUuid(), "CFUUID"));
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid) {
  requireObject(uuid);
  if (doubles::statusOf("CFUUIDCreateString") != 0) return nullptr;
  NSUUID* const object = static_cast<id>(const_cast<void*>(static_cast<CFTypeRef>(uuid)));
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  NSString* const text = [[object UUIDString] retain];
  [pool release];
  return static_cast<CFStringRef>(doubles::createdObject(text, "CFString"));
}
