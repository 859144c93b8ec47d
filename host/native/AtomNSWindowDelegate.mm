#import "native/AtomNSWindowDelegate.h"

#import <AppKit/AppKit.h>

#include "native/WindowList.h"

@implementation AtomNSWindowDelegate

- (instancetype)initWithWindows:(WindowList*)windows {
  self = [super init];
  if (self) _windows = windows;
  return self;
}

- (void)windowWillClose:(NSNotification*)notification {
  _windows->WillClose([notification object]);
}

@end
