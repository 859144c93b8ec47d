#import "Integrations/TsTiming.h"

#include <string>
#include <utility>
#include <vector>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/TimeTracker.h"

@implementation TsTiming

+ (instancetype)start:(std::function<NSArray*()>)block {
  static TsTiming* instance = nil;
  if (instance == nil) {
    instance = [[self alloc] initWithBlock:std::move(block)];
    [instance startListening];
  }
  return instance;
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
  const bool isListening =
      tessaro::platform::ServeTimeTracker(TsStdString(identifier), [self] { return [self answer]; });
  if (!isListening) TsLogWarning(@"Timing's events don't arrive here");
}

- (std::vector<std::string>)answer {
  @autoreleasepool {
    NSArray* list = _block();
    NSLog(@"Received event from Timing - returning list: %@", list);
    std::vector<std::string> texts;
    for (id text in list) {
      if ([text isKindOfClass:[NSString class]]) texts.push_back(TsStdString(text));
    }
    return texts;
  }
}

@end
