#import "AppleScript/NSApplication+AS.h"

#import "AppleScript/TsASOutgoingMessage.h"
#import "StatusItem/TsStatusItemController.h"
#include "Utilities/TsPageState.h"

@implementation NSApplication (AS)

- (NSMutableArray*)outgoingMessages {
  return [TsASOutgoingMessage outgoingMessages];
}

- (void)setOutgoingMessages:(NSArray*)messages {
  // Copy first: `messages` may be the list itself, or a view of the list.
  [[TsASOutgoingMessage outgoingMessages] setArray:[NSArray arrayWithArray:messages]];
}

- (id)valueInOutgoingMessagesWithUniqueID:(NSNumber*)uniqueId {
  const int64_t wanted = [uniqueId longLongValue];
  for (TsASOutgoingMessage* message in [TsASOutgoingMessage outgoingMessages]) {
    if ([message id] == wanted) return message;
  }
  return nil;
}

- (NSString*)currentURL {
  return GetCurrentURL();
}

- (NSString*)currentTitle {
  return GetCurrentTitle();
}

- (NSString*)currentMessageText {
  return GetCurrentMessageText();
}

- (BOOL)doNotDisturb {
  return [[TsStatusItemController sharedInstance] doNotDisturbEnabled];
}

- (void)setDoNotDisturb:(BOOL)doNotDisturb {
  if ((doNotDisturb != NO) == ([self doNotDisturb] != NO)) return;
  [[TsStatusItemController sharedInstance] toggleDoNotDisturb:nil];
}

@end
