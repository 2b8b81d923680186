// GNUstep's Cocoa and the declarations that it lacks.

#pragma once

#include_next <Cocoa/Cocoa.h>

@interface NSWindow (StyleMask)
- (void)setStyleMask:(NSUInteger)mask;
@end
