// A string and a URL whose conversions `doubles::failCall` can make fail.

#pragma once

#import <Foundation/Foundation.h>

// `UTF8String` can return null.
@interface FailingString : NSString {
 @private
  NSString* _text;
}
+ (FailingString*)stringWithText:(NSString*)text;
@end

// `absoluteString` can return nil; otherwise it returns a FailingString.
@interface FailingURL : NSURL
@end
