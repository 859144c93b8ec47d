#pragma once

#import "Platform/Cocoa.h"

#include "Base/Ref.h"
#include "Utilities/TsCallbackSlot.h"

@class TsAnnotationView;

// Opens an editor in which the user draws arrows and boxes on an image, writes on it, and makes parts of it
// unrecognisable. Saving writes a copy, beside the image and in its format, with " annotated" after its name. Images
// that are more than 6000 pixels wide or high are edited, and saved, in that size.
//
// At the end the notification "TsImageAnnotated" is posted, whose user information has the image's path under
// "original" and, if one was saved, that of the copy under "path", and `completion` is called once, with the path of
// the copy or with nil.
void TsAnnotateImage(NSString* path, const TsCompletion& completion);

// The editor's window and its owner, which lives as long as the window is open.
@interface TsImageAnnotator : NSObject {
  Ref<NSString> _path;
  TsCompletion _completion;
  // A panel, because a window would get a main menu of its own.
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
