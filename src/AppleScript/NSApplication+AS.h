#pragma once

#import "Platform/Cocoa.h"

// What scripts find on the application itself. Main thread only.
@interface NSApplication (AS)

- (NSMutableArray*)outgoingMessages;
// Replaces what is in the list, which stays the same object.
- (void)setOutgoingMessages:(NSArray*)messages;
// nil when there is none.
- (id)valueInOutgoingMessagesWithUniqueID:(NSNumber*)uniqueId;

// Of the page that is shown; nil when script has not told them.
- (NSString*)currentURL;
- (NSString*)currentTitle;
- (NSString*)currentMessageText;

- (BOOL)doNotDisturb;
- (void)setDoNotDisturb:(BOOL)doNotDisturb;

@end
