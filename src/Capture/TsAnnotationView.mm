#import "Capture/TsAnnotationView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Drawing.h"

namespace {

// A press that moves less is a click.
constexpr CGFloat kLeastMove = 3;
constexpr CGFloat kTextWidth = 220;
constexpr CGFloat kTextHeight = 24;

}  // namespace

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
