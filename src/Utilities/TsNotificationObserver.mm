#include "Utilities/TsNotificationObserver.h"

#import <Foundation/Foundation.h>

#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/MainQueue.h"

@interface TsNotificationObserver : NSObject {
  std::function<void(NSNotification*)> _handler;
}
- (instancetype)initWithHandler:(std::function<void(NSNotification*)>)handler;
- (void)receive:(NSNotification*)notification;
@end

@implementation TsNotificationObserver

- (instancetype)initWithHandler:(std::function<void(NSNotification*)>)handler {
  self = [super init];
  if (self) _handler = std::move(handler);
  return self;
}

- (void)receive:(NSNotification*)notification {
  auto& queue = tessaro::platform::MainQueue::Shared();
  if (queue.IsCurrent()) return _handler(notification);
  queue.Post([self, kept = Retain(notification)] { _handler(kept); });
}

@end

void TsPost(NSString* name, id object, NSDictionary* userInfo) {
  [[NSNotificationCenter defaultCenter] postNotificationName:name object:object userInfo:userInfo];
}

void TsObserveOnMainQueue(NSString* name, std::function<void(NSNotification*)> handler) {
  // The notification centre does not retain its observers.
  static Forever<std::vector<Ref<TsNotificationObserver>>> observers;
  const auto& observer =
      observers->emplace_back(Adopt([[TsNotificationObserver alloc] initWithHandler:std::move(handler)]));
  [[NSNotificationCenter defaultCenter] addObserver:observer.get() selector:@selector(receive:) name:name object:nil];
}
