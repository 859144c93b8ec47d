#pragma once

#include <AppKit/NSControl.h>

static const CGFloat NSVariableStatusItemLength = -1;
static const CGFloat NSSquareStatusItemLength = -2;
@interface NSStatusBarButton : NSButton
@end
@interface NSStatusItem : NSObject
@property CGFloat length;
@property(strong) NSMenu* menu;
@property(readonly, strong) NSStatusBarButton* button;
@property(copy) NSString* title API_DEPRECATED("", macos(10.0, 10.14));
@property(strong) NSImage* image API_DEPRECATED("", macos(10.0, 10.14));
@property BOOL highlightMode API_DEPRECATED("", macos(10.0, 10.14));
@end
@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
@property(readonly) CGFloat thickness;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end
