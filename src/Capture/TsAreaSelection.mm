#import "Capture/TsAreaSelection.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace platform = tessaro::platform;

namespace {

constexpr CGFloat kLeastSide = 16;
constexpr CGFloat kShade = 0.45;
constexpr unichar kEscape = 27;

NSRect MainDisplay() { return [[[NSScreen screens] objectAtIndex:0] frame]; }

// In points, as the display shows it.
Ref<NSImage> ImageOf(const platform::ScreenPicture& picture) {
  auto pixels = Adopt([[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                              pixelsWide:picture.width
                                                              pixelsHigh:picture.height
                                                           bitsPerSample:8
                                                         samplesPerPixel:3
                                                                hasAlpha:NO
                                                                isPlanar:NO
                                                          colorSpaceName:NSDeviceRGBColorSpace
                                                             bytesPerRow:picture.width * 3
                                                            bitsPerPixel:24]);
  std::memcpy([pixels bitmapData], picture.rgb.data(), picture.rgb.size());
  auto image = Adopt([[NSImage alloc] initWithSize:MainDisplay().size]);
  [pixels setSize:[image size]];
  [image addRepresentation:pixels];
  return image;
}

}  // namespace

@interface TsAreaSelectionView : NSView {
  Ref<NSImage> _screen;
  NSPoint _start;
  NSRect _area;
  std::function<void(NSRect)> _chosen;
}
- (instancetype)initWithScreen:(NSImage*)screen chosen:(std::function<void(NSRect)>)chosen;
@end

@implementation TsAreaSelectionView

- (instancetype)initWithScreen:(NSImage*)screen chosen:(std::function<void(NSRect)>)chosen {
  const NSSize size = [screen size];
  self = [super initWithFrame:NSMakeRect(0, 0, size.width, size.height)];
  if (!self) return nil;
  _screen = Retain(screen);
  _chosen = std::move(chosen);
  return self;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}

- (void)drawRect:(NSRect)dirty {
  [_screen drawInRect:[self bounds] fromRect:NSZeroRect operation:NSCompositeCopy fraction:1];
  [[NSColor colorWithCalibratedWhite:0 alpha:kShade] set];
  NSRectFillUsingOperation([self bounds], NSCompositeSourceOver);
  if (NSIsEmptyRect(_area)) return;
  [_screen drawInRect:_area fromRect:_area operation:NSCompositeCopy fraction:1];
  [[NSColor whiteColor] set];
  NSFrameRect(NSInsetRect(_area, -1, -1));
}

- (void)mouseDown:(NSEvent*)event {
  _start = [self convertPoint:[event locationInWindow] fromView:nil];
  _area = NSZeroRect;
}

- (void)mouseDragged:(NSEvent*)event {
  const NSPoint end = [self convertPoint:[event locationInWindow] fromView:nil];
  const NSRect area = NSMakeRect(std::min(_start.x, end.x), std::min(_start.y, end.y), std::abs(end.x - _start.x),
                                 std::abs(end.y - _start.y));
  _area = NSIntersectionRect(NSIntegralRect(area), [self bounds]);
  [self setNeedsDisplay:YES];
}

- (void)mouseUp:(NSEvent*)event {
  [self mouseDragged:event];
  _chosen(NSWidth(_area) >= kLeastSide && NSHeight(_area) >= kLeastSide ? _area : NSZeroRect);
}

@end

@implementation TsAreaSelection

- (instancetype)initWithPicture:(const platform::ScreenPicture&)picture
                         chosen:(std::function<void(platform::ScreenArea)>)chosen {
  self = [super initWithContentRect:MainDisplay()
                          styleMask:NSBorderlessWindowMask
                            backing:NSBackingStoreBuffered
                              defer:NO];
  if (!self) return nil;
  [self setReleasedWhenClosed:NO];
  [self setLevel:NSScreenSaverWindowLevel];
  [self setHidesOnDeactivate:NO];
  _chosen = std::move(chosen);
  const auto image = ImageOf(picture);
  const CGFloat height = [image size].height;
  auto view = Adopt([[TsAreaSelectionView alloc]
      initWithScreen:image
              chosen:[self, height](NSRect area) {
                [self choose:{0, NSMinX(area), height - NSMaxY(area), NSWidth(area), NSHeight(area)}];
              }]);
  [self setContentView:view];
  return self;
}

- (void)choose:(const platform::ScreenArea&)area {
  [self orderOut:nil];
  if (const auto chosen = std::exchange(_chosen, nullptr)) chosen(area);
}

- (BOOL)canBecomeKeyWindow {
  return YES;
}

- (void)keyDown:(NSEvent*)event {
  NSString* characters = [event characters];
  if ([characters length] > 0 && [characters characterAtIndex:0] == kEscape) return [self choose:{}];
  [super keyDown:event];
}

@end
