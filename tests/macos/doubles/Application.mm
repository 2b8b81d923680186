#include "tests/macos/doubles/Application.h"

#import <objc/runtime.h>

#include <string>

#include "tests/macos/doubles/Journal.h"

using doubles::Inside;
using doubles::note;
using doubles::text;

namespace doubles {
namespace {

NSURL* opened = nil;

}  // namespace

NSURL* lastOpened() {
  return opened;
}

}  // namespace doubles

// Methods that take the place of the framework's own.
@interface Replacements : NSObject
@end

@implementation Replacements

- (void)keyDown:(NSEvent*)event {
  note("super keyDown " + text([event charactersIgnoringModifiers]));
}

- (BOOL)openURL:(NSURL*)url {
  note("openURL " + text(url));
  [doubles::opened release];
  doubles::opened = [url retain];
  return YES;
}

+ (void)replace:(SEL)method of:(Class)owner {
  const Method mine = class_getInstanceMethod(self, method);
  class_replaceMethod(owner, method, method_getImplementation(mine), method_getTypeEncoding(mine));
}

@end

@implementation JournalApplication

- (void)setDelegate:(id)delegate {
  note(std::string("application setDelegate ") + (delegate == nil ? "nil" : object_getClassName(delegate)));
  const Inside inside;
  [super setDelegate:delegate];
}

- (void)activateIgnoringOtherApps:(BOOL)flag {
  note("activateIgnoringOtherApps " + text(flag));
  const Inside inside;
  [super activateIgnoringOtherApps:flag];
}

- (void)terminate:(id)sender {
  (void)sender;
  note("terminate");
}

@end

@implementation JournalWindow

- (void)dealloc {
  [_zoomButton release];
  [super dealloc];
}

- (NSRect)frame {
  note("window frame");
  return [super frame];
}

// Returns, as on a Mac, once the frame has been reached; the free implementation moves on while the program does.
- (void)setFrame:(NSRect)frame display:(BOOL)display animate:(BOOL)animate {
  note("window setFrame " + text(frame) + " display " + text(display) + " animate " + text(animate));
  const Inside inside;
  [super setFrame:frame display:display];
}

- (void)setContentView:(NSView*)view {
  note(std::string("setContentView ") + object_getClassName(view));
  const Inside inside;
  [super setContentView:view];
}

- (BOOL)makeFirstResponder:(NSResponder*)responder {
  note(std::string("makeFirstResponder ") + object_getClassName(responder));
  const Inside inside;
  return [super makeFirstResponder:responder];
}

- (void)setTitle:(NSString*)title {
  note("setTitle " + text(title));
  const Inside inside;
  [super setTitle:title];
}

- (void)setMinSize:(NSSize)size {
  note("setMinSize " + text(size));
  const Inside inside;
  [super setMinSize:size];
}

- (NSButton*)standardWindowButton:(NSWindowButton)kind {
  note(kind == NSWindowZoomButton ? "standardWindowButton zoom" : "standardWindowButton other");
  if (_zoomButton == nil) {
    _zoomButton = [[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)];
    [_zoomButton setEnabled:NO];
  }
  return _zoomButton;
}

- (NSUInteger)styleMask {
  note("styleMask");
  return [super styleMask];
}

- (void)setStyleMask:(NSUInteger)mask {
  note("setStyleMask " + std::to_string(mask));
  const Inside inside;
  [super setStyleMask:mask];
}

@end

@implementation JournalWindow (Keys)

+ (void)watchSuperclass {
  [Replacements replace:@selector(keyDown:) of:[NSWindow class]];
}

@end

@implementation NSWorkspace (Journal)

+ (void)watch {
  [Replacements replace:@selector(openURL:) of:[NSWorkspace class]];
}

@end
