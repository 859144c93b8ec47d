#pragma once

#import "Platform/Cocoa.h"

// A disc of 16 × 16 points in `color`, with `text` on it unless that is nil. Cached: drawing takes far longer than the
// rest of a row.
[[nodiscard]] NSImage* AccountBadge(NSColor* color, NSString* text);
