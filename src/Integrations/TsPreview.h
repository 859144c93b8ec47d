#pragma once

#import <Foundation/Foundation.h>

// The program that prints documents for people.
@interface TsPreview : NSObject

// Any thread.
+ (void)printFile:(NSURL*)url;

@end
