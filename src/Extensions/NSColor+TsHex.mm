#import "Extensions/NSColor+TsHex.h"

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
