#import "Integrations/TsTiming.h"

#include <string>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Timing.h"

@implementation TsTiming

+ (instancetype)start:(std::function<NSArray*()>)block {
  static Forever<Ref<TsTiming>> instance([&] {
    auto timing = Adopt([[self alloc] initWithBlock:std::move(block)]);
    [timing startListening];
    return timing;
  }());
  return *instance;
}

- (instancetype)initWithBlock:(std::function<NSArray*()>)block {
  self = [super init];
  if (self) _block = std::move(block);
  return self;
}

- (void)startListening {
  NSLog(@"Start listening to Timing events.");
  NSString* identifier = [[NSBundle mainBundle] bundleIdentifier];
  if (identifier == nil) {
    TsLogWarning(@"Timing can't find an application without a bundle identifier");
    return;
  }
  const auto served = tessaro::platform::ServeTiming(TsStdString(identifier), [self] { return [self answer]; });
  if (!served) TsLogWarning(@"Timing's events don't arrive: %s", served.error().message.c_str());
}

- (std::vector<std::string>)answer {
  @autoreleasepool {
    NSArray* list = _block();
    NSLog(@"Received event from Timing - returning list: %@", list);
    std::vector<std::string> texts;
    for (id each in list) {
      if (NSString* text = As<NSString>(each)) texts.push_back(TsStdString(text));
    }
    return texts;
  }
}

@end
