#include "tests/macos/doubles/CoreFoundation.h"

#import <Foundation/Foundation.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <mutex>

#include "tests/macos/doubles/SystemCalls.h"

namespace doubles {
namespace {

std::mutex turn;
std::multimap<CFTypeRef, std::string> types;  // of the objects that are out

std::string typeOnReturn(CFTypeRef object) {
  const std::lock_guard<std::mutex> held(turn);
  const auto entry = types.find(object);
  if (entry == types.end()) return "nobody's object";
  std::string type = entry->second;
  types.erase(entry);
  return type;
}

}  // namespace

CFTypeRef handedOut(CFTypeRef object, const std::string& type) {
  made(type);
  const std::lock_guard<std::mutex> held(turn);
  types.emplace(object, type);
  return object;
}

CFStringRef newString(const std::string& text) {
  NSString* const string = [[NSString alloc] initWithUTF8String:text.c_str()];
  return string == nil ? nullptr : static_cast<CFStringRef>(handedOut(string, "CFString"));
}

}  // namespace doubles

const CFAllocatorRef kCFAllocatorDefault = nullptr;

namespace {

// Core Foundation ends a process that hands it nothing.
void mustBe(CFTypeRef object) {
  if (object == nullptr) std::abort();
}

// The implementation's own random ones are of no version.
NSUUID* randomUuid() {
  unsigned char bytes[16];
  if (::getentropy(bytes, sizeof bytes) != 0) return nil;
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  return [[NSUUID alloc] initWithUUIDBytes:bytes];
}

}  // namespace

void CFRelease(CFTypeRef object) {
  mustBe(object);
  doubles::givenBack(doubles::typeOnReturn(object));
  [static_cast<id>(const_cast<void*>(object)) release];
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
  mustBe(string);
  if (encoding != kCFStringEncodingUTF8) return 0;
  NSString* const text = static_cast<id>(const_cast<void*>(static_cast<CFTypeRef>(string)));
  return [text getCString:buffer maxLength:static_cast<NSUInteger>(bufferSize) encoding:NSUTF8StringEncoding] ? 1 : 0;
}

CFUUIDRef CFUUIDCreate(CFAllocatorRef) {
  doubles::noteCall("CFUUIDCreate");
  if (doubles::statusOf("CFUUIDCreate") != 0) return nullptr;
  return static_cast<CFUUIDRef>(doubles::handedOut(randomUuid(), "CFUUID"));
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid) {
  mustBe(uuid);
  doubles::noteCall("CFUUIDCreateString");
  if (doubles::statusOf("CFUUIDCreateString") != 0) return nullptr;
  NSUUID* const object = static_cast<id>(const_cast<void*>(static_cast<CFTypeRef>(uuid)));
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  NSString* const text = [[object UUIDString] retain];
  [pool release];
  return static_cast<CFStringRef>(doubles::handedOut(text, "CFString"));
}
