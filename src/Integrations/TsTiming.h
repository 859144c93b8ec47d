#pragma once

#import <Foundation/Foundation.h>

#include <functional>

// Answers the Timing application's question what the user is at work on. Main thread only.
@interface TsTiming : NSObject {
  std::function<NSArray*()> _block;
}

// There is one; a later call gives it and ignores its block.
+ (instancetype)start:(std::function<NSArray*()>)block;

- (instancetype)initWithBlock:(std::function<NSArray*()>)block;
- (void)startListening;

@end
