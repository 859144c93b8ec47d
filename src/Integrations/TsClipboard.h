#pragma once

#import <Foundation/Foundation.h>

@interface TsClipboard : NSObject

// Replaces what the general pasteboard holds by a text. Main thread only.
+ (void)copy:(NSString*)text;

@end
