#import <AppKit/NSView.h>

// GNUstep keeps a view's alpha value, but draws the view opaque. Hide views that are entirely transparent.

@interface NSView (Alpha)
@end

@implementation NSView (Alpha)

- (void)setAlphaValue:(CGFloat)alpha {
  const BOOL wasClear = _alphaValue == 0;
  const BOOL isClear = alpha == 0;
  _alphaValue = alpha;
  if (wasClear != isClear) [self setHidden:isClear];
}

@end
