#pragma once

#import <Foundation/NSString.h>

#include <functional>

@class NSArray;
@class NSWindow;

// Lets the user choose files over `window`. `options` is JSON text; docs/api/files.md describes its keys. `answer` is
// called exactly once, on a later turn of the main queue, with the paths; with nil when the user chose nothing, and,
// after an error in the log, without a window or for malformed options.
void TsShowFileDialog(NSWindow* window, NSString* options, std::function<void(NSArray* paths)> answer);
