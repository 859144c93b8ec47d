#pragma once

#include <Foundation/NSAppleEventManager.h>

FOUNDATION_EXPORT NSString* const NSAppleScriptErrorMessage;
@interface NSAppleScript : NSObject
- (instancetype)initWithSource:(NSString*)source;
- (NSAppleEventDescriptor*)executeAndReturnError:(NSDictionary**)error;
@end
