#pragma once

#import <AppKit/NSPasteboard.h>
#import <AppKit/NSPasteboardItem.h>

// GNUstep's pasteboards hold types, not items.
@interface NSPasteboard (Items)

// An item of type "public.file-url" for each file, and where there are no files one that offers all types. The first
// item of several offers all types too.
- (NSArray*)pasteboardItems;

- (NSInteger)clearContents;

// Declares the types of all items and sets their data; for a type of several items the first item's. Files are written
// as one list of file names.
- (BOOL)writeObjects:(NSArray*)items;

@end
