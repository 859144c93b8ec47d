#pragma once

#import "Platform/Cocoa.h"

#include <functional>
#include <vector>

#include "Base/Ref.h"
#include "Capture/Annotation.h"

// An image that a person draws on with the mouse.
@interface TsAnnotationView : NSView {
  Ref<NSImage> _image;
  Ref<NSBitmapImageRep> _pixels;
  // The image as it is shown: drawing the whole for every movement of the mouse would take too long.
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

// What the next press of the mouse begins.
@property(nonatomic, assign) Annotation::Kind tool;

- (instancetype)initWithFrame:(NSRect)frame image:(NSImage*)image changed:(std::function<void()>)changed;

- (BOOL)canUndo;
- (void)undo;

// A text that is being written becomes an annotation.
- (void)endText;

// The image with everything that was drawn, in its own size, as PNG. nil when it can't be made.
- (NSData*)annotatedImage;

@end
