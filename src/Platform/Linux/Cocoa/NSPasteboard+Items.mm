#import "Platform/Linux/Cocoa/NSPasteboard+Items.h"

#import <AppKit/AppKit.h>

#include "Utilities/Ref.h"

// GNUstep hands out the pasteboard server's own list, which can't be enumerated across the two processes.
static NSArray* TypesOf(NSPasteboard* pasteboard) {
  NSArray* remote = [pasteboard types];
  const NSUInteger count = [remote count];
  NSMutableArray* types = [NSMutableArray arrayWithCapacity:count];
  for (NSUInteger i = 0; i < count; ++i) [types addObject:[remote objectAtIndex:i]];
  return types;
}

// What is on a pasteboard, fetched only when it is asked for: it may be large, and come from another application.
@interface TsLazyPasteboardItem : NSPasteboardItem {
  Ref<NSPasteboard> _pasteboard;
}
- (instancetype)initWithPasteboard:(NSPasteboard*)pasteboard;
@end

@implementation TsLazyPasteboardItem

- (instancetype)initWithPasteboard:(NSPasteboard*)pasteboard {
  self = [super init];
  if (self) _pasteboard = Retain(pasteboard);
  return self;
}

- (NSArray*)types {
  return TypesOf(_pasteboard);
}

- (NSData*)dataForType:(NSString*)type {
  return [_pasteboard dataForType:type];
}

- (NSString*)stringForType:(NSString*)type {
  return [_pasteboard stringForType:type];
}

- (id)propertyListForType:(NSString*)type {
  return [_pasteboard propertyListForType:type];
}

@end

// GNUstep's own items have only the types that somebody promises data for.
@interface TsFilePasteboardItem : NSPasteboardItem
@end

@implementation TsFilePasteboardItem

- (NSArray*)types {
  return [NSArray arrayWithObject:@"public.file-url"];
}

@end

static NSPasteboardItem* ItemOfFile(NSString* path) {
  auto item = Adopt([[TsFilePasteboardItem alloc] init]);
  [item setString:[[NSURL fileURLWithPath:path] absoluteString] forType:@"public.file-url"];
  return item.Autoreleased();
}

@implementation NSPasteboard (Items)

- (NSArray*)pasteboardItems {
  NSArray* types = TypesOf(self);
  if ([types count] == 0) return [NSArray array];
  id paths = [types containsObject:NSFilenamesPboardType] ? [self propertyListForType:NSFilenamesPboardType] : nil;
  NSMutableArray* items = [NSMutableArray array];
  if ([paths isKindOfClass:[NSArray class]]) {
    for (NSString* path in static_cast<NSArray*>(paths)) [items addObject:ItemOfFile(path)];
  }
  if ([items count] > 0) return items;
  return [NSArray arrayWithObject:Adopt([[TsLazyPasteboardItem alloc] initWithPasteboard:self]).Autoreleased()];
}

@end
