#pragma once

#import "Platform/Cocoa.h"

// A menu row's title in small type; empty for nil.
[[nodiscard]] NSAttributedString* SmallTitle(NSString* title);
