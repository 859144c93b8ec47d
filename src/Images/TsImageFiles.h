#pragma once

#import <AppKit/NSImage.h>

#include <string>

// Whether there is a folder at the path; a missing one is made. Logs why not.
[[nodiscard]] bool TsMakeFolder(NSString* folder);

// The image in a file that the platform wrote, one point a pixel, autoreleased; nil when it can't be read.
[[nodiscard]] NSImage* TsImageOfFile(const std::string& path);
