#pragma once

#import "Platform/Cocoa.h"

// A row in small type.
@interface TsStatusItemSmallMenuItem : NSMenuItem
@end
