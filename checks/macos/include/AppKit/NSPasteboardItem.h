#pragma once

#include <AppKit/NSPasteboard.h>

@interface NSPasteboardItem : NSObject <NSPasteboardWriting, NSPasteboardReading>
@property(readonly, copy) NSArray* types;
- (BOOL)setData:(NSData*)data forType:(NSPasteboardType)type;
- (BOOL)setString:(NSString*)string forType:(NSPasteboardType)type;
- (BOOL)setPropertyList:(id)list forType:(NSPasteboardType)type;
- (NSData*)dataForType:(NSPasteboardType)type;
- (NSString*)stringForType:(NSPasteboardType)type;
- (id)propertyListForType:(NSPasteboardType)type;
@end
