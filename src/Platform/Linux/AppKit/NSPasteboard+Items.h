#pragma once

#import <AppKit/NSPasteboard.h>
#import <AppKit/NSPasteboardItem.h>

// GNUstep's pasteboards hold types, not items.
@interface NSPasteboard (Items)

// One item for each file, of type "public.file-url". The first item, or the only one without files, offers all types.
- (NSArray*)pasteboardItems;

- (NSInteger)clearContents;

// Declares the types of all items and sets their data; the first item with a type wins. Files are written as one list
// of file names.
- (BOOL)writeObjects:(NSArray*)items;

@end
