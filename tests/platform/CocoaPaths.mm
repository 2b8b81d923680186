#import <Foundation/Foundation.h>

#include "tests/platform/CocoaPaths.h"

// Selects the path syntax of the methods. Not declared in a header of the library.
extern "C" const char* GSPathHandling(const char* mode);

namespace {

class Scope {
 public:
  Scope() : pool_([NSAutoreleasePool new]) {
    GSPathHandling("unix");
    _NSLog_printf_handler = [](NSString*) {};  // silences its warnings about these paths
  }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;
  ~Scope() { [pool_ release]; }

 private:
  NSAutoreleasePool* pool_;
};

NSString* native(const std::string& text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

}  // namespace

namespace cocoa {

std::string lastPathComponent(const std::string& path) {
  const Scope scope;
  return [[native(path) lastPathComponent] UTF8String];
}

std::string appendingPathComponent(const std::string& path, const std::string& component) {
  const Scope scope;
  return [[native(path) stringByAppendingPathComponent:native(component)] UTF8String];
}

std::string deletingLastPathComponent(const std::string& path) {
  const Scope scope;
  return [[native(path) stringByDeletingLastPathComponent] UTF8String];
}

std::string pathExtension(const std::string& path) {
  const Scope scope;
  return [[native(path) pathExtension] UTF8String];
}

std::string deletingPathExtension(const std::string& path) {
  const Scope scope;
  return [[native(path) stringByDeletingPathExtension] UTF8String];
}

std::optional<std::string> appendingPathExtension(const std::string& path, const std::string& extension) {
  const Scope scope;
  NSString* const extended = [native(path) stringByAppendingPathExtension:native(extension)];
  if (extended == nil) return std::nullopt;
  return std::string([extended UTF8String]);
}

}  // namespace cocoa
