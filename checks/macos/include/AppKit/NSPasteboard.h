#pragma once

#include <AppKit/AppKitDefines.h>

using NSPasteboardType = NSString*;
using NSPasteboardName = NSString*;
APPKIT_EXTERN NSPasteboardType const NSPasteboardTypeString;
APPKIT_EXTERN NSPasteboardType const NSPasteboardTypePNG;
APPKIT_EXTERN NSPasteboardType const NSPasteboardTypeTIFF;
APPKIT_EXTERN NSPasteboardType const NSPasteboardTypeFileURL;
APPKIT_EXTERN NSPasteboardType const NSStringPboardType API_DEPRECATED("", macos(10.0, 10.14));
APPKIT_EXTERN NSPasteboardType const NSFilenamesPboardType API_DEPRECATED("", macos(10.0, 10.14));
APPKIT_EXTERN NSPasteboardType const NSURLPboardType API_DEPRECATED("", macos(10.0, 10.14));
APPKIT_EXTERN NSPasteboardType const NSTIFFPboardType API_DEPRECATED("", macos(10.0, 10.14));
APPKIT_EXTERN NSPasteboardType const NSHTMLPboardType API_DEPRECATED("", macos(10.0, 10.14));
APPKIT_EXTERN NSPasteboardType const NSRTFPboardType API_DEPRECATED("", macos(10.0, 10.14));
APPKIT_EXTERN NSPasteboardName const NSFindPboard API_DEPRECATED("", macos(10.0, 10.13));
APPKIT_EXTERN NSPasteboardName const NSDragPboard API_DEPRECATED("", macos(10.0, 10.13));
APPKIT_EXTERN NSPasteboardName const NSGeneralPboard API_DEPRECATED("", macos(10.0, 10.13));

@protocol NSPasteboardWriting <NSObject>
@end
@protocol NSPasteboardReading <NSObject>
@end

@interface NSPasteboard : NSObject
@property(class, readonly, strong) NSPasteboard* generalPasteboard;
+ (NSPasteboard*)pasteboardWithName:(NSPasteboardName)name;
+ (NSPasteboard*)pasteboardWithUniqueName;
@property(readonly, copy) NSPasteboardName name;
@property(readonly) NSInteger changeCount;
@property(readonly, copy) NSArray* types;
@property(readonly, copy) NSArray* pasteboardItems;
- (NSInteger)clearContents;
- (NSInteger)declareTypes:(NSArray*)types owner:(id)owner;
- (NSInteger)addTypes:(NSArray*)types owner:(id)owner;
- (NSPasteboardType)availableTypeFromArray:(NSArray*)types;
- (BOOL)writeObjects:(NSArray*)objects;
- (BOOL)setData:(NSData*)data forType:(NSPasteboardType)type;
- (BOOL)setString:(NSString*)string forType:(NSPasteboardType)type;
- (BOOL)setPropertyList:(id)list forType:(NSPasteboardType)type;
- (NSData*)dataForType:(NSPasteboardType)type;
- (NSString*)stringForType:(NSPasteboardType)type;
- (id)propertyListForType:(NSPasteboardType)type;
- (void)releaseGlobally;
@end

@interface NSObject (NSPasteboardOwner)
- (void)pasteboard:(NSPasteboard*)sender provideDataForType:(NSPasteboardType)type;
@end

@interface NSURL (NSPasteboardSupport) <NSPasteboardWriting, NSPasteboardReading>
+ (NSURL*)URLFromPasteboard:(NSPasteboard*)pasteboard;
- (void)writeToPasteboard:(NSPasteboard*)pasteboard;
@end
@interface NSString (NSPasteboardSupport) <NSPasteboardWriting, NSPasteboardReading>
@end
