#import "Extensions/NSWindow+TsResize.h"

@implementation NSWindow (TsResize)

- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate {
  const NSRect frame = [self frame];
  const NSRect content = [self contentRectForFrameRect:frame];
  const CGFloat bottom = NSMinY(frame) + NSHeight(content) - size.height;
  const NSRect resized = NSMakeRect(NSMinX(frame), bottom, size.width, size.height);
  [self setFrame:[self frameRectForContentRect:resized] display:YES animate:[self isVisible]];
}

@end
