#include "tests/macos/doubles/FailingUrl.h"

#include "tests/macos/doubles/SystemDoubles.h"

@implementation FailingString

+ (FailingString*)stringWithText:(NSString*)text {
  FailingString* const string = [[[FailingString alloc] init] autorelease];
  string->_text = [text copy];
  return string;
}

- (void)dealloc {
  [_text release];
  [super dealloc];
}

- (NSUInteger)length {
  return [_text length];
}

- (unichar)characterAtIndex:(NSUInteger)index {
  return [_text characterAtIndex:index];
}

- (const char*)UTF8String {
  return doubles::statusOf("UTF8String") == 0 ? [_text UTF8String] : nullptr;
}

@end

@implementation FailingURL

- (NSString*)absoluteString {
  if (doubles::statusOf("absoluteString") != 0) return nil;
  return [FailingString stringWithText:[super absoluteString]];
}

@end
