#import "Capture/TsAnnotationView.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "Platform/Drawing.h"

namespace {

constexpr CGFloat kStrokesPerImage = 220;
constexpr CGFloat kLeastStroke = 3;
constexpr CGFloat kLettersPerStroke = 6;
constexpr CGFloat kGrainsPerStroke = 4;
constexpr CGFloat kHeadPerStroke = 5;
constexpr NSInteger kMostSamples = 4;

NSColor* Ink() { return [NSColor colorWithCalibratedRed:0.88 green:0.15 blue:0.12 alpha:1]; }

void DrawArrow(const Annotation& arrow, CGFloat stroke) {
  const CGFloat across = arrow.end.x - arrow.start.x;
  const CGFloat up = arrow.end.y - arrow.start.y;
  const CGFloat length = std::hypot(across, up);
  if (length < 1) return;
  const CGFloat head = std::min(length, stroke * kHeadPerStroke);
  const NSPoint direction = NSMakePoint(across / length, up / length);
  const NSPoint neck = NSMakePoint(arrow.end.x - direction.x * head, arrow.end.y - direction.y * head);
  const NSPoint side = NSMakePoint(-direction.y * head / 2, direction.x * head / 2);
  NSBezierPath* shaft = [NSBezierPath bezierPath];
  [shaft setLineWidth:stroke];
  [shaft setLineCapStyle:NSRoundLineCapStyle];
  [shaft moveToPoint:arrow.start];
  [shaft lineToPoint:neck];
  [shaft stroke];
  NSBezierPath* point = [NSBezierPath bezierPath];
  [point moveToPoint:arrow.end];
  [point lineToPoint:NSMakePoint(neck.x + side.x, neck.y + side.y)];
  [point lineToPoint:NSMakePoint(neck.x - side.x, neck.y - side.y)];
  [point closePath];
  [point fill];
}

void DrawBox(const Annotation& box, CGFloat stroke) {
  NSBezierPath* path = [NSBezierPath bezierPathWithRect:box.Frame()];
  [path setLineWidth:stroke];
  [path setLineJoinStyle:NSRoundLineJoinStyle];
  [path stroke];
}

// Light letters on a dark plate are legible on any image.
void DrawText(const Annotation& annotation, const AnnotationStyle& style) {
  NSDictionary* attributes = @{
    NSFontAttributeName : [NSFont boldSystemFontOfSize:style.letterSize],
    NSForegroundColorAttributeName : [NSColor whiteColor],
  };
  const NSSize size = [annotation.text sizeWithAttributes:attributes];
  const CGFloat padding = style.letterSize / 3;
  const NSRect plate = NSMakeRect(annotation.start.x, annotation.start.y - size.height / 2 - padding,
                                  size.width + 2 * padding, size.height + 2 * padding);
  [[NSBezierPath bezierPathWithRoundedRect:plate xRadius:padding yRadius:padding] fill];
  [annotation.text drawAtPoint:NSMakePoint(NSMinX(plate) + padding, NSMinY(plate) + padding) withAttributes:attributes];
}

// The part of an image that a grain covers; rows count from the top.
struct Cell {
  NSInteger left, right, top, bottom;
};

using Samples = std::array<unsigned char, kMostSamples>;

Samples MeanOf(NSBitmapImageRep* pixels, const Cell& cell) {
  const NSInteger samples = [pixels samplesPerPixel];
  const NSInteger rowBytes = [pixels bytesPerRow];
  const unsigned char* bytes = [pixels bitmapData];
  std::array<std::uint64_t, kMostSamples> sums{};
  for (NSInteger y = cell.top; y < cell.bottom; ++y) {
    const unsigned char* at = bytes + y * rowBytes + cell.left * samples;
    for (NSInteger x = cell.left; x < cell.right; ++x) {
      for (NSInteger s = 0; s < samples; ++s) sums[s] += *at++;
    }
  }
  const auto count = static_cast<std::uint64_t>((cell.right - cell.left) * (cell.bottom - cell.top));
  Samples mean{};
  for (NSInteger s = 0; s < samples; ++s) mean[s] = static_cast<unsigned char>(sums[s] / count);
  return mean;
}

bool CanBeRead(NSBitmapImageRep* pixels) {
  return ![pixels isPlanar] && [pixels bitsPerSample] == 8 && [pixels samplesPerPixel] <= kMostSamples &&
         [pixels bitsPerPixel] == 8 * [pixels samplesPerPixel];
}

Ref<NSBitmapImageRep> NewGrains(NSBitmapImageRep* like, NSInteger width, NSInteger height) {
  return Adopt([[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                       pixelsWide:width
                                                       pixelsHigh:height
                                                    bitsPerSample:8
                                                  samplesPerPixel:[like samplesPerPixel]
                                                         hasAlpha:[like hasAlpha]
                                                         isPlanar:NO
                                                   colorSpaceName:[like colorSpaceName]
                                                      bytesPerRow:0
                                                     bitsPerPixel:0]);
}

Cell CellIn(NSRect frame, NSInteger imageHeight, NSInteger column, NSInteger columns, NSInteger row, NSInteger rows) {
  const auto along = [](CGFloat start, CGFloat length, NSInteger part, NSInteger parts) {
    return static_cast<NSInteger>(start + length * static_cast<CGFloat>(part) / static_cast<CGFloat>(parts));
  };
  const CGFloat top = static_cast<CGFloat>(imageHeight) - NSMaxY(frame);
  return {along(NSMinX(frame), NSWidth(frame), column, columns),
          along(NSMinX(frame), NSWidth(frame), column + 1, columns), along(top, NSHeight(frame), row, rows),
          along(top, NSHeight(frame), row + 1, rows)};
}

// A press that moves less is a click.
constexpr CGFloat kLeastMove = 3;
constexpr CGFloat kTextWidth = 220;
constexpr CGFloat kTextHeight = 24;

}  // namespace

NSRect Annotation::Frame() const {
  return NSMakeRect(std::min(start.x, end.x), std::min(start.y, end.y), std::abs(end.x - start.x),
                    std::abs(end.y - start.y));
}

AnnotationStyle::AnnotationStyle(NSSize image)
    : stroke(std::max(kLeastStroke, std::max(image.width, image.height) / kStrokesPerImage)),
      letterSize(stroke * kLettersPerStroke),
      grain(stroke * kGrainsPerStroke) {}

void DrawAnnotation(const Annotation& annotation, const AnnotationStyle& style) {
  [Ink() set];
  switch (annotation.kind) {
    case Annotation::Kind::Arrow:
      return DrawArrow(annotation, style.stroke);
    case Annotation::Kind::Box:
      return DrawBox(annotation, style.stroke);
    case Annotation::Kind::Text:
      return DrawText(annotation, style);
    case Annotation::Kind::Blur:
      return [annotation.blurred drawInRect:annotation.Frame()
                                   fromRect:NSZeroRect
                                  operation:NSCompositeSourceOver
                                   fraction:1];
  }
}

Ref<NSBitmapImageRep> PixelsOf(NSImage* image) {
  auto* stored = static_cast<NSBitmapImageRep*>([[image representations] objectAtIndex:0]);
  if (CanBeRead(stored)) return Retain(stored);
  const NSSize size = [image size];
  return tessaro::platform::DrawPixels(size, [image, size] {
    [image drawInRect:NSMakeRect(0, 0, size.width, size.height)
             fromRect:NSZeroRect
            operation:NSCompositeCopy
             fraction:1];
  });
}

Ref<NSImage> Blurred(NSBitmapImageRep* pixels, NSRect frame, const AnnotationStyle& style) {
  const NSRect all =
      NSMakeRect(0, 0, static_cast<CGFloat>([pixels pixelsWide]), static_cast<CGFloat>([pixels pixelsHigh]));
  const NSRect inside = NSIntersectionRect(NSIntegralRect(frame), all);
  if (NSIsEmptyRect(inside)) return nullptr;
  const CGFloat grain = std::max(style.grain, std::min(NSWidth(inside), NSHeight(inside)) / 2);
  const auto columns = std::max<NSInteger>(1, static_cast<NSInteger>(NSWidth(inside) / grain));
  const auto rows = std::max<NSInteger>(1, static_cast<NSInteger>(NSHeight(inside) / grain));
  const auto grains = NewGrains(pixels, columns, rows);
  for (NSInteger row = 0; row < rows; ++row) {
    for (NSInteger column = 0; column < columns; ++column) {
      const Cell cell = CellIn(inside, [pixels pixelsHigh], column, columns, row, rows);
      const Samples mean = MeanOf(pixels, cell);
      unsigned char* at = [grains bitmapData] + row * [grains bytesPerRow] + column * [grains samplesPerPixel];
      std::copy_n(mean.begin(), [grains samplesPerPixel], at);
    }
  }
  auto image = Adopt([[NSImage alloc] initWithSize:inside.size]);
  [grains setSize:inside.size];
  [image addRepresentation:grains];
  return image;
}

@implementation TsAnnotationView

@synthesize tool = _tool;

- (instancetype)initWithFrame:(NSRect)frame image:(NSImage*)image changed:(std::function<void()>)changed {
  self = [super initWithFrame:frame];
  if (!self) return nil;
  _image = Retain(image);
  _pixels = PixelsOf(image);
  _changed = std::move(changed);
  // Hidden rather than removed while no text is edited: AppKit goes on using the field after the end of editing.
  auto field = Adopt([[NSTextField alloc] initWithFrame:NSZeroRect]);
  [field setHidden:YES];
  [field setTarget:self];
  [field setAction:@selector(endText)];
  [self addSubview:field];
  _textField = field;
  return self;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}

- (BOOL)acceptsFirstResponder {
  return YES;
}

// ---- Coordinates

- (CGFloat)scale {
  const NSSize image = [_image size];
  const NSSize view = [self bounds].size;
  return std::min(
      {1.0, static_cast<double>(view.width / image.width), static_cast<double>(view.height / image.height)});
}

- (NSRect)imageFrame {
  const CGFloat scale = [self scale];
  const NSSize size = NSMakeSize(std::round([_image size].width * scale), std::round([_image size].height * scale));
  const NSRect bounds = [self bounds];
  return NSMakeRect(std::round(NSMidX(bounds) - size.width / 2), std::round(NSMidY(bounds) - size.height / 2),
                    size.width, size.height);
}

- (NSPoint)imagePointOf:(NSEvent*)event {
  const NSPoint point = [self convertPoint:[event locationInWindow] fromView:nil];
  const NSRect frame = [self imageFrame];
  const CGFloat scale = [self scale];
  const NSSize size = [_image size];
  return NSMakePoint(std::clamp<CGFloat>((point.x - NSMinX(frame)) / scale, 0, size.width),
                     std::clamp<CGFloat>((point.y - NSMinY(frame)) / scale, 0, size.height));
}

// ---- Drawing

- (NSImage*)shownImage {
  const NSSize size = [self imageFrame].size;
  if (_shown && NSEqualSizes([_shown size], size)) return _shown;
  _shown = Adopt([[NSImage alloc] initWithSize:size]);
  [_shown lockFocus];
  [_image drawInRect:NSMakeRect(0, 0, size.width, size.height)
            fromRect:NSZeroRect
           operation:NSCompositeCopy
            fraction:1];
  [_shown unlockFocus];
  return _shown;
}

- (void)drawAnnotations {
  const AnnotationStyle style([_image size]);
  for (const Annotation& each : _annotations) DrawAnnotation(each, style);
  if (_isDrawing) DrawAnnotation(_draft, style);
}

- (void)drawRect:(NSRect)dirty {
  [[NSColor darkGrayColor] set];
  NSRectFill([self bounds]);
  const NSRect frame = [self imageFrame];
  [[self shownImage] drawInRect:frame fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  [NSGraphicsContext saveGraphicsState];
  NSAffineTransform* transform = [NSAffineTransform transform];
  [transform translateXBy:NSMinX(frame) yBy:NSMinY(frame)];
  [transform scaleBy:[self scale]];
  [transform concat];
  [self drawAnnotations];
  [NSGraphicsContext restoreGraphicsState];
}

- (NSData*)annotatedImage {
  [self endText];
  const NSSize size = [_image size];
  const auto pixels = tessaro::platform::DrawPixels(size, [self, size] {
    [_image drawInRect:NSMakeRect(0, 0, size.width, size.height)
              fromRect:NSZeroRect
             operation:NSCompositeCopy
              fraction:1];
    [self drawAnnotations];
  });
  return [pixels TIFFRepresentationUsingCompression:NSTIFFCompressionNone factor:0];
}

// ---- Changes

- (void)add:(Annotation)annotation {
  _annotations.push_back(std::move(annotation));
  [self setNeedsDisplay:YES];
  _changed();
}

- (BOOL)canUndo {
  return !_annotations.empty();
}

- (void)undo {
  if (_annotations.empty()) return;
  _annotations.pop_back();
  [self setNeedsDisplay:YES];
  _changed();
}

// ---- The mouse

- (void)mouseDown:(NSEvent*)event {
  [self endText];
  if (_tool == Annotation::Kind::Text) return [self beginTextAt:event];
  _draft = Annotation{.kind = _tool, .start = [self imagePointOf:event]};
  _draft.end = _draft.start;
  _isDrawing = true;
}

- (void)mouseDragged:(NSEvent*)event {
  if (!_isDrawing) return;
  _draft.end = [self imagePointOf:event];
  if (_draft.kind == Annotation::Kind::Blur) {
    _draft.blurred = Blurred(_pixels, _draft.Frame(), AnnotationStyle([_image size]));
  }
  [self setNeedsDisplay:YES];
}

- (void)mouseUp:(NSEvent*)event {
  if (!_isDrawing) return;
  [self mouseDragged:event];
  _isDrawing = false;
  const CGFloat moved = std::hypot(_draft.end.x - _draft.start.x, _draft.end.y - _draft.start.y);
  if (moved * [self scale] >= kLeastMove) return [self add:std::exchange(_draft, {})];
  [self setNeedsDisplay:YES];
}

// ---- Texts

- (void)beginTextAt:(NSEvent*)event {
  const NSPoint point = [self convertPoint:[event locationInWindow] fromView:nil];
  _textPlace = [self imagePointOf:event];
  [_textField setFrame:NSMakeRect(point.x, point.y - kTextHeight / 2, kTextWidth, kTextHeight)];
  [_textField setStringValue:@""];
  [_textField setHidden:NO];
  _isWriting = true;
  [[self window] makeFirstResponder:_textField];
}

- (void)endText {
  // Ending the editing calls this method again.
  if (!std::exchange(_isWriting, false)) return;
  [[self window] makeFirstResponder:self];
  const auto text = Adopt(static_cast<NSString*>([[_textField stringValue] copy]));
  [_textField setHidden:YES];
  if ([text length] > 0) [self add:{.kind = Annotation::Kind::Text, .start = _textPlace, .text = text}];
  [self setNeedsDisplay:YES];
}

@end
