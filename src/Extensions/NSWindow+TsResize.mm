#import "Extensions/NSWindow+TsResize.h"

#include <algorithm>

static const CGFloat kSmallest = 1;

@implementation NSWindow (TsResize)

// From the content's corner rather than the frame's: elsewhere than on macOS a frame has borders at its sides.
- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate {
  const NSRect content = [self contentRectForFrameRect:[self frame]];
  // Window servers refuse what has no size, and break under what is much larger than a screen.
  const NSSize largest = [[NSScreen mainScreen] frame].size;
  const CGFloat width = std::clamp(size.width, kSmallest, largest.width);
  const CGFloat height = std::clamp(size.height, kSmallest, largest.height);
  const NSRect resized = NSMakeRect(NSMinX(content), NSMaxY(content) - height, width, height);
  [self setFrame:[self frameRectForContentRect:resized] display:YES animate:[self isVisible]];
}

@end
