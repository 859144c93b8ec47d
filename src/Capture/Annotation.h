#pragma once

#import <AppKit/NSBitmapImageRep.h>
#import <AppKit/NSImage.h>

#include <cstdint>

#include "Base/Ref.h"

// Something that a person has drawn on an image. Places are in the image's pixels, from its lower left.
struct Annotation {
  enum class Kind : std::uint8_t { Arrow, Box, Text, Blur };

  Kind kind = Kind::Arrow;
  NSPoint start = NSZeroPoint;
  NSPoint end = NSZeroPoint;  // the arrow's head, the opposite corner; of no meaning for a text
  Ref<NSString> text{};
  Ref<NSImage> blurred{};

  [[nodiscard]] NSRect Frame() const;
};

// Measures that suit an image of that size: lines that can be seen, letters that can be read.
struct AnnotationStyle {
  explicit AnnotationStyle(NSSize image);

  CGFloat stroke;
  CGFloat letterSize;
  // The least that is made one when a part is blurred.
  CGFloat grain;
};

// Draws with the image's pixels as unit, where the focus is.
void DrawAnnotation(const Annotation& annotation, const AnnotationStyle& style);

// The pixels of an image, eight bits a sample, as Blurred() takes them.
[[nodiscard]] Ref<NSBitmapImageRep> PixelsOf(NSImage* image);

// What `frame` of the image looks like from afar: nothing is left but the mean of each grain, and there are no more
// than two of them from edge to edge of what is hidden, or letters could be guessed. nil where the frame is empty.
[[nodiscard]] Ref<NSImage> Blurred(NSBitmapImageRep* pixels, NSRect frame, const AnnotationStyle& style);
