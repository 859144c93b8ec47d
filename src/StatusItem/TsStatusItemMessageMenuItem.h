#pragma once

#import "Platform/Cocoa.h"

// An unread message's row: in small type, its title cut to 60 characters and "...".
@interface TsStatusItemMessageMenuItem : NSMenuItem
@end
