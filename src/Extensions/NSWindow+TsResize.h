#pragma once

#import "Platform/Cocoa.h"

@interface NSWindow (TsResize)

// Gives the window's content another size and keeps the top edge of the window where it is. A visible window is
// animated, a hidden one never: `animate` doesn't change that.
- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate;

@end
