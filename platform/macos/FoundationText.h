// Texts on their way to Foundation and back. What Foundation makes lives until the innermost autorelease scope ends.

#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <vector>

namespace platform {

// Nil when the text, which ends at its first NUL, is not UTF-8.
inline NSString* stringOf(const std::string& text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

// Nil when one of the texts is not UTF-8.
inline NSArray* stringsOf(const std::vector<std::string>& texts) {
  NSMutableArray* const strings = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string& text : texts) {
    NSString* const string = stringOf(text);
    if (string == nil) return nil;
    [strings addObject:string];
  }
  return strings;
}

// "" when there is no text.
inline std::string textOf(NSString* string) {
  const char* const text = [string UTF8String];
  return text == nullptr ? "" : text;
}

}  // namespace platform
