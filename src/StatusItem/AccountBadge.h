#pragma once

#import "Platform/Cocoa.h"

// A disc of 16 × 16 points in `color`, with `text` on it unless that is nil. Rows of the same account get the same
// image each time the menu is built: drawing takes far longer than everything else that a row needs.
[[nodiscard]] NSImage* AccountBadge(NSColor* color, NSString* text);
