#pragma once

#import <AppKit/NSBitmapImageRep.h>
#import <AppKit/NSImage.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "Base/Ref.h"
#import "Platform/Cocoa.h"

// A mark that the user has drawn on an image. Points are in the image's pixels, from its lower left.
struct Annotation {
  enum class Kind : std::uint8_t { Arrow, Box, Text, Blur };

  Kind kind = Kind::Arrow;
  NSPoint start = NSZeroPoint;
  NSPoint end = NSZeroPoint;  // the arrow's head, or the opposite corner; unused for a text
  Ref<NSString> text{};
  Ref<NSImage> blurred{};

  [[nodiscard]] NSRect Frame() const;
};

// Line and letter sizes that are legible on an image of that size.
struct AnnotationStyle {
  explicit AnnotationStyle(NSSize image);

  CGFloat stroke;
  CGFloat letterSize;
  // Side of the smallest square that blurring averages.
  CGFloat grain;
};

// Draws into the focused view or image, with the image's pixels as unit.
void DrawAnnotation(const Annotation& annotation, const AnnotationStyle& style);

// The pixels of an image, eight bits a sample, as Blurred() takes them.
[[nodiscard]] Ref<NSBitmapImageRep> PixelsOf(NSImage* image);

// `frame` of the image, reduced to the mean colour of each grain. A grain is at least half as high as the frame, so
// that hidden letters can't be guessed. nil for an empty frame.
[[nodiscard]] Ref<NSImage> Blurred(NSBitmapImageRep* pixels, NSRect frame, const AnnotationStyle& style);

// An image that the user draws on with the mouse.
@interface TsAnnotationView : NSView {
  Ref<NSImage> _image;
  Ref<NSBitmapImageRep> _pixels;
  // The image scaled to the view: scaling it for every movement of the mouse would take too long.
  Ref<NSImage> _shown;
  std::vector<Annotation> _annotations;
  Annotation _draft;
  bool _isDrawing;
  Annotation::Kind _tool;
  NSTextField* _textField;
  NSPoint _textPlace;
  bool _isWriting;
  std::function<void()> _changed;
}

// The kind of mark that the next press of the mouse begins.
@property(nonatomic, assign) Annotation::Kind tool;

- (instancetype)initWithFrame:(NSRect)frame image:(NSImage*)image changed:(std::function<void()>)changed;

- (BOOL)canUndo;
- (void)undo;

// Turns the text that is being written into an annotation.
- (void)endText;

// The image with its annotations, in its own size, as uncompressed TIFF: compressing is for another process. nil when
// it can't be drawn.
- (NSData*)annotatedImage;

@end
