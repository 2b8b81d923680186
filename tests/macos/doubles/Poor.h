// Texts and addresses of which some part is missing, as `doubles::fail` says.

#pragma once

#import <Foundation/Foundation.h>

// May have no `UTF8String`.
@interface PoorText : NSString {
 @private
  NSString* _text;
}
+ (PoorText*)textWithString:(NSString*)text;
@end

// May have no `absoluteString`, or one that is poor itself.
@interface PoorURL : NSURL
@end
