#import "Platform/Linux/AppKit/NSPasteboard+Items.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/SideTable.h"

#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

static NSString* const kFileURLType = @"public.file-url";

// GNUstep returns the pasteboard server's own list, a proxy that can't be enumerated.
static NSMutableArray* TypesOf(NSPasteboard* pasteboard) {
  NSArray* remote = [pasteboard types];
  const NSUInteger count = [remote count];
  NSMutableArray* types = [NSMutableArray arrayWithCapacity:count];
  for (NSUInteger i = 0; i < count; ++i) [types addObject:[remote objectAtIndex:i]];
  return types;
}

namespace {

struct TypedData {
  Ref<NSString> type;
  Ref<NSData> data;
};

using TypesInOrder = std::shared_ptr<std::vector<TypedData>>;
using ItemContents = tessaro::platform::SideTable<NSPasteboardItem, TypesInOrder>;

TypesInOrder ContentsOf(NSPasteboardItem* item) {
  TypesInOrder contents = ItemContents::Shared().Get(item);
  if (contents) return contents;
  contents = std::make_shared<std::vector<TypedData>>();
  ItemContents::Shared().Set(item, contents);
  return contents;
}

TypedData* Find(std::vector<TypedData>& contents, NSString* type) {
  const auto found = std::find_if(contents.begin(), contents.end(),
                                  [type](const TypedData& each) { return [each.type isEqualToString:type]; });
  return found == contents.end() ? nullptr : &*found;
}

}  // namespace

// GNUstep's own items have only promised types, in no order.
@interface NSPasteboardItem (Contents)
@end

@implementation NSPasteboardItem (Contents)

- (NSArray*)types {
  NSMutableArray* types = [NSMutableArray array];
  for (const TypedData& each : *ContentsOf(self)) [types addObject:each.type];
  return types;
}

- (BOOL)setData:(NSData*)data forType:(NSString*)type {
  if (data == nil || type == nil) return NO;
  const TypesInOrder contents = ContentsOf(self);
  auto copy = Copy(data);
  if (TypedData* known = Find(*contents, type)) {
    known->data = std::move(copy);
  } else {
    contents->push_back({Copy(type), std::move(copy)});
  }
  return YES;
}

- (BOOL)setString:(NSString*)string forType:(NSString*)type {
  return [self setData:[string dataUsingEncoding:NSUTF8StringEncoding] forType:type];
}

- (NSData*)dataForType:(NSString*)type {
  const TypedData* found = Find(*ContentsOf(self), type);
  return found == nullptr ? nil : found->data.get();
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

static void SetFile(NSPasteboardItem* item, NSString* path) {
  [item setString:[[NSURL fileURLWithPath:path] absoluteString] forType:kFileURLType];
}

static NSArray* FilesOf(NSPasteboard* pasteboard, NSArray* types) {
  if (![types containsObject:NSFilenamesPboardType]) return @[];
  NSArray* paths = As<NSArray>([pasteboard propertyListForType:NSFilenamesPboardType]);
  return paths != nil ? paths : @[];
}

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
