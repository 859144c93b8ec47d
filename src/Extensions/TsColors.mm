#import "Extensions/TsColors.h"

#include "Base/Ref.h"

namespace {

CGFloat Component(unsigned int color, int shift) { return static_cast<CGFloat>((color >> shift) & 0xff) / 255; }

}  // namespace

@implementation NSColor (TsHex)

+ (NSColor*)ts_colorWithHexColorString:(NSString*)string {
  unsigned int color = 0;
  if (string != nil && ![[NSScanner scannerWithString:string] scanHexInt:&color]) color = 0;
  return [NSColor colorWithCalibratedRed:Component(color, 16)
                                   green:Component(color, 8)
                                    blue:Component(color, 0)
                                   alpha:1];
}

@end

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
