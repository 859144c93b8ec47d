#pragma once

#import <AppKit/NSWindow.h>

class WindowList;

// Delegate of one AtomNSWindow: takes it off the list when it closes.
@interface AtomNSWindowDelegate : NSObject <NSWindowDelegate> {
  WindowList* _windows;
}

// `windows` must outlive the delegate.
- (instancetype)initWithWindows:(WindowList*)windows;

@end
