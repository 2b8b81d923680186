#include "app/cocoa/SVOApplication.h"

@implementation SVOApplication

- (void)finishLaunching {
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(hasLaunched:)
                                               name:NSApplicationDidFinishLaunchingNotification
                                             object:self];
  [super finishLaunching];
}

// The delegate shows the window while it handles the same notification, perhaps after this method.
- (void)hasLaunched:(NSNotification*)notification {
  (void)notification;
  [self performSelector:@selector(activateShownWindow) withObject:nil afterDelay:0];
}

- (void)activateShownWindow {
  if (![self isActive]) [self activateIgnoringOtherApps:YES];
}

- (void)terminate:(id)sender {
  [(id<NSApplicationDelegate>)[self delegate] applicationShouldTerminateAfterLastWindowClosed:self];
  [super terminate:sender];
}

@end
