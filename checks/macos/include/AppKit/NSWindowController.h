#pragma once

#include <AppKit/NSWindow.h>

@interface NSWindowController : NSResponder
- (instancetype)initWithWindow:(NSWindow*)window;
@property(strong) NSWindow* window;
@property(copy) NSString* windowFrameAutosaveName;
- (void)showWindow:(id)sender;
- (void)close;
@end
