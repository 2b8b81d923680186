#include "tests/macos/doubles/Poor.h"

#include "tests/macos/doubles/Journal.h"

@implementation PoorText

+ (PoorText*)textWithString:(NSString*)text {
  PoorText* const poor = [[[PoorText alloc] init] autorelease];
  poor->_text = [text copy];
  return poor;
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
  return doubles::fails("UTF8String") ? nullptr : [_text UTF8String];
}

@end

@implementation PoorURL

- (NSString*)absoluteString {
  if (doubles::fails("absoluteString")) return nil;
  return [PoorText textWithString:[super absoluteString]];
}

@end
