#import "Extensions/NSWindow+TsResize.h"

#include <algorithm>

// Window servers know no others.
static const CGFloat kSmallest = 1;
static const CGFloat kLargest = 10000;

@implementation NSWindow (TsResize)

// From the content's corner rather than the frame's: elsewhere than on macOS a frame has borders at its sides.
- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate {
  const NSRect content = [self contentRectForFrameRect:[self frame]];
  const CGFloat width = std::clamp(size.width, kSmallest, kLargest);
  const CGFloat height = std::clamp(size.height, kSmallest, kLargest);
  const NSRect resized = NSMakeRect(NSMinX(content), NSMaxY(content) - height, width, height);
  [self setFrame:[self frameRectForContentRect:resized] display:YES animate:[self isVisible]];
}

@end
