#pragma once

#import <Foundation/NSString.h>

#include <functional>

@class NSArray;
@class NSWindow;

// Lets the person choose files over `window`, as the JSON text `options` says; docs/api.md tells its keys. `answer` is
// called exactly once, on a later turn of the main queue, with the paths; with nil when nothing was chosen, and, with
// an error in the log, when nothing could be asked: without a window, for a text that is no dictionary.
void TsShowFileDialog(NSWindow* window, NSString* options, std::function<void(NSArray* paths)> answer);
