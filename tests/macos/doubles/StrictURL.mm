// `URLWithString:` as on a Mac, where it takes no missing text.

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

@interface NSURL (Strict)
+ (id)strictURLWithString:(NSString*)text;
@end

@implementation NSURL (Strict)

// Under this name stands the free implementation's own method, once the two have been exchanged.
+ (id)strictURLWithString:(NSString*)text {
  if (text == nil) [NSException raise:NSInvalidArgumentException format:@"nil string parameter"];
  return [self strictURLWithString:text];
}

@end

@interface Strictness : NSObject
@end

@implementation Strictness

// The class is looked up without being set up: it is too early for that.
+ (void)load {
  const Class url = objc_getClass("NSURL");
  method_exchangeImplementations(class_getClassMethod(url, @selector(URLWithString:)),
                                 class_getClassMethod(url, @selector(strictURLWithString:)));
}

@end
