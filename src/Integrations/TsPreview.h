#pragma once

#import <Foundation/Foundation.h>

// The document viewer, from which the user prints.
@interface TsPreview : NSObject

// Any thread.
+ (void)printFile:(NSURL*)url;

@end
