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

Ref<NSImage> ScreenImage() {
  const platform::ScreenPicture picture = platform::CaptureScreen();
  if (picture.rgb.empty()) return nullptr;
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
  auto image = Adopt([[NSImage alloc] initWithSize:NSMakeSize(picture.width, picture.height)]);
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

- (instancetype)initWithChosen:(std::function<void(platform::ScreenArea)>)chosen {
  const auto screen = ScreenImage();
  const NSSize size = [screen size];
  self = [super initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                          styleMask:NSBorderlessWindowMask
                            backing:NSBackingStoreBuffered
                              defer:NO];
  if (!self) return nil;
  [self setReleasedWhenClosed:NO];
  if (!screen) {
    [self release];
    return nil;
  }
  _chosen = std::move(chosen);
  [self setLevel:NSScreenSaverWindowLevel];
  [self setHidesOnDeactivate:NO];
  const CGFloat height = size.height;
  auto view = Adopt([[TsAreaSelectionView alloc]
      initWithScreen:screen
              chosen:[self, height](NSRect area) {
                [self choose:{static_cast<int>(NSMinX(area)), static_cast<int>(height - NSMaxY(area)),
                              static_cast<int>(NSWidth(area)), static_cast<int>(NSHeight(area))}];
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
