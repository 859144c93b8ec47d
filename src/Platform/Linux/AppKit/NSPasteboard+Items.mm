#import "Platform/Linux/AppKit/CocoaAdditions.h"

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/SideTable.h"

namespace {

NSString* const kFileURLType = @"public.file-url";

struct Contents {
  Ref<NSArray> types;
  Ref<NSDictionary> data;  // by type
};

using ItemContents = tessaro::platform::SideTable<NSPasteboardItem, Contents>;

// GNUstep returns a proxy of the pasteboard server's list, which can't be enumerated.
NSMutableArray* TypesOf(NSPasteboard* pasteboard) {
  NSArray* remote = [pasteboard types];
  const NSUInteger count = [remote count];
  NSMutableArray* types = [NSMutableArray arrayWithCapacity:count];
  for (NSUInteger i = 0; i < count; ++i) [types addObject:[remote objectAtIndex:i]];
  return types;
}

void SetFile(NSPasteboardItem* item, NSString* path) {
  [item setString:[[NSURL fileURLWithPath:path] absoluteString] forType:kFileURLType];
}

NSArray* FilesOf(NSPasteboard* pasteboard, NSArray* types) {
  if (![types containsObject:NSFilenamesPboardType]) return @[];
  NSArray* paths = As<NSArray>([pasteboard propertyListForType:NSFilenamesPboardType]);
  return paths != nil ? paths : @[];
}

}  // namespace

// GNUstep's items have only promised types, in no order.
@interface NSPasteboardItem (Contents)
@end

@implementation NSPasteboardItem (Contents)

- (NSArray*)types {
  NSArray* types = ItemContents::Shared().Get(self).types.Autoreleased();
  return types != nil ? types : @[];
}

- (BOOL)setData:(NSData*)data forType:(NSString*)type {
  if (data == nil || type == nil) return NO;
  ItemContents::Shared().Change(self, [&](Contents& contents) {
    NSArray* types = contents.types ? contents.types.get() : @[];
    if (![types containsObject:type]) contents.types = Retain([types arrayByAddingObject:Copy(type)]);
    NSMutableDictionary* all = [NSMutableDictionary dictionaryWithDictionary:contents.data];
    [all setObject:Copy(data) forKey:type];
    contents.data = Retain<NSDictionary>(all);
  });
  return YES;
}

- (BOOL)setString:(NSString*)string forType:(NSString*)type {
  return [self setData:[string dataUsingEncoding:NSUTF8StringEncoding] forType:type];
}

- (NSData*)dataForType:(NSString*)type {
  NSDictionary* data = ItemContents::Shared().Get(self).data.Autoreleased();
  return [data objectForKey:type];
}

- (NSString*)stringForType:(NSString*)type {
  NSData* data = [self dataForType:type];
  if (data == nil) return nil;
  return Adopt([[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding]).Autoreleased();
}

@end

// Contents of a pasteboard, fetched on request: they may be large, and come from another application.
@interface TsLazyPasteboardItem : NSPasteboardItem {
  Ref<NSPasteboard> _pasteboard;
  Ref<NSArray> _offered;
}
- (instancetype)initWithPasteboard:(NSPasteboard*)pasteboard types:(NSArray*)types;
@end

@implementation TsLazyPasteboardItem

- (instancetype)initWithPasteboard:(NSPasteboard*)pasteboard types:(NSArray*)types {
  self = [super init];
  if (self) {
    _pasteboard = Retain(pasteboard);
    _offered = Retain(types);
  }
  return self;
}

- (NSArray*)types {
  return [[super types] arrayByAddingObjectsFromArray:_offered];
}

- (NSData*)dataForType:(NSString*)type {
  NSData* own = [super dataForType:type];
  return own != nil ? own : [_pasteboard dataForType:type];
}

- (NSString*)stringForType:(NSString*)type {
  // GNUstep's pasteboards keep strings in a form of their own.
  return [super dataForType:type] != nil ? [super stringForType:type] : [_pasteboard stringForType:type];
}

- (id)propertyListForType:(NSString*)type {
  return [_pasteboard propertyListForType:type];
}

@end

// GNUstep makes images only of TIFF and vector graphics on pasteboards, although it can read the others.
@interface NSBitmapImageRep (PasteboardTypes)
@end

@implementation NSBitmapImageRep (PasteboardTypes)

+ (NSArray*)imageUnfilteredPasteboardTypes {
  return @[ NSTIFFPboardType, @"public.png", @"public.jpg", @"public.jpeg", @"public.gif", @"public.tiff" ];
}

@end

@implementation NSPasteboard (Items)

- (NSArray*)pasteboardItems {
  NSMutableArray* types = TypesOf(self);
  if ([types count] == 0) return @[];
  NSArray* paths = FilesOf(self, types);
  if ([paths count] > 0) [types removeObject:kFileURLType];
  auto first = Adopt([[TsLazyPasteboardItem alloc] initWithPasteboard:self types:types]);
  NSMutableArray* items = [NSMutableArray arrayWithObject:first];
  for (NSString* path in paths) {
    if (path != [paths objectAtIndex:0]) {
      [items addObject:Adopt([[NSPasteboardItem alloc] init])];
    }
    SetFile([items lastObject], path);
  }
  return items;
}

- (NSInteger)clearContents {
  return [self declareTypes:@[] owner:nil];
}

- (BOOL)writeObjects:(NSArray*)items {
  NSMutableArray* types = [NSMutableArray array];
  NSMutableArray* data = [NSMutableArray array];
  for (NSPasteboardItem* item in items) {
    const BOOL listsFiles =
        [[item types] containsObject:NSFilenamesPboardType] || [types containsObject:NSFilenamesPboardType];
    for (NSString* type in [item types]) {
      if ([types containsObject:type] || (listsFiles && [type isEqualToString:kFileURLType])) continue;
      NSData* value = [item dataForType:type];
      if (value == nil) continue;
      [types addObject:type];
      [data addObject:value];
    }
  }
  [self declareTypes:types owner:nil];
  BOOL allWritten = YES;
  for (NSUInteger i = 0; i < [types count]; ++i) {
    if (![self setData:[data objectAtIndex:i] forType:[types objectAtIndex:i]]) allWritten = NO;
  }
  return allWritten;
}

@end
