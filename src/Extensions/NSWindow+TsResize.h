#pragma once

#import "Platform/Cocoa.h"

@interface NSWindow (TsResize)

// Resizes the window's content and keeps the window's top edge in place. Visible windows are animated and hidden ones
// are not, whatever `animate` says.
- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate;

@end
