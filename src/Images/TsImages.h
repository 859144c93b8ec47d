#pragma once

#import <AppKit/NSPasteboard.h>

#include "Utilities/TsPendingCallback.h"

// Pictures as files. Main thread only; what fails is logged, and the path is nil.

// Writes a copy that is at most so many pixels wide and high. `target` is a file, or a folder that is there. Gives the
// path of the copy. See Platform/ImageScaling.h.
[[nodiscard]] NSString* TsScaleImage(NSString* path, NSString* target, int maxWidth, int maxHeight);

// Writes a PNG, at most `size` pixels wide and high, that shows what is in a file, into `folder`, which is made when it
// is missing. `completion` is given the path on a later turn of the event loop, once. The same file in the same size
// has the same preview, which is then replaced.
void TsGeneratePreview(NSString* path, int size, NSString* folder, const TsCompletion& completion);

// Writes the image that the pasteboard holds into `folder`, which is made when it is missing: in its own format where
// web views show that, otherwise as PNG. Of an image file that was copied, a copy.
[[nodiscard]] NSString* TsImageFromPasteboard(NSPasteboard* pasteboard, NSString* folder);
