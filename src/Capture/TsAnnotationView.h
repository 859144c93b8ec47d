#pragma once

#import "Platform/Cocoa.h"

#include <functional>
#include <vector>

#include "Base/Ref.h"
#include "Capture/Annotation.h"

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
