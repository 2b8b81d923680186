#import <Cocoa/Cocoa.h>

@implementation NSWindow (StyleMask)

// The decoration stays as it was drawn.
- (void)setStyleMask:(NSUInteger)mask {
  _styleMask = mask;
}

@end
