#import "Extensions/NSWindow+TsResize.h"

@implementation NSWindow (TsResize)

// From the content's corner rather than the frame's: elsewhere than on macOS a frame has borders at its sides.
- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate {
  const NSRect content = [self contentRectForFrameRect:[self frame]];
  const NSRect resized = NSMakeRect(NSMinX(content), NSMaxY(content) - size.height, size.width, size.height);
  [self setFrame:[self frameRectForContentRect:resized] display:YES animate:[self isVisible]];
}

@end
