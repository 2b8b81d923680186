// Converts strings from and to Foundation. Returned Foundation objects are autoreleased.

#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <vector>

#include "platform/Text.h"

namespace platform {

// Returns nil if the text is not UTF-8. Ignores everything from the first NUL.
inline NSString* stringOf(const std::string& text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

// Returns nil if one of the texts is not UTF-8.
inline NSArray* stringsOf(const std::vector<std::string>& texts) {
  NSMutableArray* const strings = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string& text : texts) {
    NSString* const string = stringOf(text);
    if (string == nil) return nil;
    [strings addObject:string];
  }
  return strings;
}

// nil => ""
inline std::string textOf(NSString* string) {
  return orEmpty([string UTF8String]);
}

}  // namespace platform
