#import "Extensions/NSImage+TsTint.h"

#include "Base/Ref.h"

@implementation NSImage (TsTint)

- (NSImage*)ts_tintedImageWithColor:(NSColor*)color {
  const NSSize size = [self size];
  auto tinted = Adopt([[NSImage alloc] initWithSize:size]);
  [tinted lockFocus];
  // Not a copy that is drawn over: focused, it would be a picture of its own first representation only.
  [self drawAtPoint:NSZeroPoint fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  [color set];
  NSRectFillUsingOperation(NSMakeRect(0, 0, size.width, size.height), NSCompositeSourceAtop);
  [tinted unlockFocus];
  return tinted.Autoreleased();
}

@end
