#pragma once

#import "Platform/Cocoa.h"

#include <string>

#include "Base/Ref.h"
#include "Utilities/TsPendingCallback.h"

@class TsAnnotationView;

// Opens an editor in which a person draws arrows and boxes on an image, writes on it, and makes parts of it
// unrecognisable. What is saved is a copy, beside the image and in its format; it is called like it with " annotated"
// behind the name. Images of more than 6000 pixels in a row are edited, and saved, in that size.
//
// The end is told by the notification "TsImageAnnotated", whose user information has the image's path under "original"
// and, if one was saved, that of the copy under "path"; and by `completion`, which is called once, with the path of the
// copy or with nil.
void TsAnnotateImage(NSString* path, const TsCompletion& completion);

// The editor's window and its owner, which lives as long as that is open.
@interface TsImageAnnotator : NSObject {
  Ref<NSString> _path;
  TsCompletion _completion;
  // A panel has no main menu of its own.
  Ref<NSPanel> _window;
  TsAnnotationView* _canvas;
  Ref<NSArray> _toolButtons;
  NSButton* _undoButton;
}

- (IBAction)chooseTool:(id)sender;
- (IBAction)undo:(id)sender;
- (IBAction)save:(id)sender;
- (IBAction)cancel:(id)sender;

@end
