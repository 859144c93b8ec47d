#pragma once

#import <Foundation/NSDictionary.h>
#import <Foundation/NSNotification.h>

#include <functional>

// Posts a notification to the process's default centre.
void TsPost(NSString* name, id object = nil, NSDictionary* userInfo = nil);

// Calls `handler` on the main thread for each notification named `name`, from any sender, for the life of the
// process: at once when it was posted there, otherwise on a later turn of the main queue.
// `handler` must not throw a C++ exception.
void TsObserveOnMainQueue(NSString* name, std::function<void(NSNotification*)> handler);
