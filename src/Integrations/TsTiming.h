#pragma once

#import <Foundation/Foundation.h>

#include <functional>

// Answers the Timing application's request for the user's current work. Main thread only.
@interface TsTiming : NSObject {
  std::function<NSArray*()> _block;
}

// Later calls return the same object and ignore their block.
+ (instancetype)start:(std::function<NSArray*()>)block;

- (instancetype)initWithBlock:(std::function<NSArray*()>)block;
- (void)startListening;

@end
