#pragma once

#import <AppKit/NSPasteboard.h>
#import <AppKit/NSPasteboardItem.h>

// GNUstep's pasteboards hold types, not items.
@interface NSPasteboard (Items)

// An item of type "public.file-url" for each file, and where there are no files one that offers all types.
- (NSArray*)pasteboardItems;

@end
