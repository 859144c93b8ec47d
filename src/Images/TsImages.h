#pragma once

#import "Platform/Cocoa.h"

#include <string>

#include "Utilities/TsCallbackSlot.h"

// Images as files. Main thread only; failures are logged, and the path is nil.

// Writes a copy that is at most so many pixels wide and high, and returns its path. `target` is a file, or an existing
// folder. See Platform/Pictures.h.
[[nodiscard]] NSString* TsScaleImage(NSString* path, NSString* target, int maxWidth, int maxHeight);

// Writes a PNG, at most `size` pixels wide and high, that shows the contents of a file, into `folder`, which is made
// when it is missing. `completion` receives the path on a later turn of the event loop, once. The same file in the same
// size has the same preview, which is then replaced.
void TsGeneratePreview(NSString* path, int size, NSString* folder, const TsCompletion& completion);

// Writes the image on the pasteboard into `folder`, which is made when it is missing: a PNG, JPEG or GIF as it is,
// any other image as PNG, and an image file that was copied as a copy of that file.
[[nodiscard]] NSString* TsImageFromPasteboard(NSPasteboard* pasteboard, NSString* folder);

// Shows files one after the other over a window, `paths[index]` first, until they are closed. `closed` is called once,
// on a later turn of the event loop, with the path that was shown last; with nil when nothing can be shown.
void TsQuickLook(NSWindow* window, NSArray* paths, NSInteger index, const TsCompletion& closed);

// Whether there is a folder at the path; a missing one is made. Logs why not.
[[nodiscard]] bool TsMakeFolder(NSString* folder);

// The image in a file that the platform wrote, one point a pixel, autoreleased; nil when it can't be read.
[[nodiscard]] NSImage* TsImageOfFile(const std::string& path);
