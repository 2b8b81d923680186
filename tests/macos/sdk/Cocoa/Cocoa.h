// Cocoa as the program uses it, over a free implementation that lacks some of it.

#pragma once

#include_next <Cocoa/Cocoa.h>

@interface NSWindow (StyleMask)
- (void)setStyleMask:(NSUInteger)mask;
@end
