#pragma once

#import "Platform/Cocoa.h"

// The application's own scripting properties and elements. Main thread only.
@interface NSApplication (AS)

- (NSMutableArray*)outgoingMessages;
// Replaces the contents of the list, which stays the same object.
- (void)setOutgoingMessages:(NSArray*)messages;
// nil when there is no such message.
- (id)valueInOutgoingMessagesWithUniqueID:(NSNumber*)uniqueId;

// The current page's; nil until script has set them.
- (NSString*)currentURL;
- (NSString*)currentTitle;
- (NSString*)currentMessageText;

- (BOOL)doNotDisturb;
- (void)setDoNotDisturb:(BOOL)doNotDisturb;

@end
