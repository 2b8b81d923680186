#include "tests/macos/doubles/CoreFoundation.h"

#import <Foundation/Foundation.h>

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

void CFRelease(CFTypeRef object) {
  doubles::givenBack(doubles::typeOnReturn(object));
  [static_cast<id>(const_cast<void*>(object)) release];
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
  if (encoding != kCFStringEncodingUTF8) return 0;
  NSString* const text = static_cast<id>(const_cast<void*>(static_cast<CFTypeRef>(string)));
  return [text getCString:buffer maxLength:static_cast<NSUInteger>(bufferSize) encoding:NSUTF8StringEncoding] ? 1 : 0;
}
