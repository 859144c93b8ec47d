#include "Platform/Timing.h"

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/macOS/Guarded.h"

// The Timing application asks with an Apple event, of the class and identifier below, and gets a list of texts. Apple
// events arrive on the main thread. The user consents, to Timing, the first time it asks.
@interface TsTimingHandler : NSObject {
  tessaro::platform::TimingAnswer _answer;
}
- (instancetype)initWithAnswer:(tessaro::platform::TimingAnswer)answer;
- (void)handleEvent:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply;
@end

// A list appends what is put at this position.
static constexpr NSInteger kAtItsEnd = 0;

@implementation TsTimingHandler

- (instancetype)initWithAnswer:(tessaro::platform::TimingAnswer)answer {
  self = [super init];
  if (self != nil) _answer = std::move(answer);
  return self;
}

- (void)handleEvent:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply {
  NSAppleEventDescriptor* list = [NSAppleEventDescriptor listDescriptor];
  for (const std::string& text : _answer()) {
    [list insertDescriptor:[NSAppleEventDescriptor descriptorWithString:TsNSString(text)] atIndex:kAtItsEnd];
  }
  [reply setParamDescriptor:list forKeyword:keyDirectObject];
}

@end

namespace tessaro::platform {

namespace {

constexpr AEEventClass kTimingClass = 'Tmng';
constexpr AEEventID kListEvent = 'Gpat';

}  // namespace

Result<void> ServeTiming(const std::string&, TimingAnswer answer) {
  const std::string failure = Guarded([&answer] {
    // The manager does not retain its handlers.
    [[clang::no_destroy]] static const auto handler = Adopt([[TsTimingHandler alloc] initWithAnswer:std::move(answer)]);
    [[NSAppleEventManager sharedAppleEventManager] setEventHandler:handler.get()
                                                       andSelector:@selector(handleEvent:withReplyEvent:)
                                                     forEventClass:kTimingClass
                                                        andEventID:kListEvent];
  });
  if (!failure.empty()) return Fail(failure);
  return {};
}

}  // namespace tessaro::platform
