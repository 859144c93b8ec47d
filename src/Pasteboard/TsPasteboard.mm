#include "Pasteboard/TsPasteboard.h"

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Cocoa.h"
#include "Platform/Files.h"

namespace platform = tessaro::platform;

namespace {

constexpr std::size_t kMostBytes = 256 << 20;

// nil without a snapshot; that of an empty pasteboard is an empty array.
Ref<NSArray>& TsSavedPasteboard() {
  static Forever<Ref<NSArray>> items;
  return *items;
}

Ref<NSPasteboardItem> CopyItem(NSPasteboardItem* item) {
  auto copy = Adopt([[NSPasteboardItem alloc] init]);
  for (NSString* type in [item types]) {
    if (NSData* data = [item dataForType:type]) [copy setData:data forType:type];
  }
  return copy;
}

NSString* TypeOfImageFile(NSString* path) {
  NSDictionary* types =
      @{@"png" : @"public.png", @"jpg" : @"public.jpg", @"jpeg" : @"public.jpg", @"gif" : @"public.gif"};
  return [types objectForKey:[[path pathExtension] lowercaseString]];
}

NSData* ContentsOfFile(NSString* path) {
  const auto bytes = platform::ReadFile(TsStdString([path stringByExpandingTildeInPath]), kMostBytes);
  return bytes ? [NSData dataWithBytes:bytes->data() length:bytes->size()] : nil;
}

NSPasteboard* FindPasteboard() { return [NSPasteboard pasteboardWithName:NSFindPboard]; }

NSString* const kURLsWithTitlesType = @"WebURLsWithTitlesPboardType";
// The types 'url ' and 'urln' of the classic Mac OS.
NSString* const kClassicURLType = @"CorePasteboardFlavorType 0x75726C20";
NSString* const kClassicTitleType = @"CorePasteboardFlavorType 0x75726C6E";

NSArray* TitlesOrNone(NSArray* titles, NSArray* urls) {
  if (titles != nil) return titles;
  NSMutableArray* none = [NSMutableArray array];
  for (NSUInteger i = 0; i < [urls count]; ++i) [none addObject:@""];
  return none;
}

NSString* FirstOf(NSArray* texts) { return [texts count] > 0 ? [texts objectAtIndex:0] : @""; }

}  // namespace

bool TsSavePasteboard(NSPasteboard* pasteboard) {
  if (TsSavedPasteboard()) {
    TsLogWarning(@"Cannot save pasteboard as it's already saved.");
    return false;
  }
  auto items = Adopt([[NSMutableArray alloc] init]);
  for (NSPasteboardItem* item in [pasteboard pasteboardItems]) [items addObject:CopyItem(item)];
  TsSavedPasteboard() = items;
  return true;
}

bool TsRestorePasteboard(NSPasteboard* pasteboard) {
  if (!TsSavedPasteboard()) {
    TsLogWarning(@"Cannot restore pasteboard as there's no content.");
    return false;
  }
  [pasteboard clearContents];
  [pasteboard writeObjects:TsSavedPasteboard()];
  TsSavedPasteboard() = nullptr;
  return true;
}

bool TsWriteFileContents(NSPasteboard* pasteboard, NSString* path) {
  NSString* type = TypeOfImageFile(path);
  if (type == nil) {
    TsLogWarning(@"Unsupported file extension %@", [path pathExtension]);
    return false;
  }
  [pasteboard clearContents];
  [pasteboard declareTypes:@[ type ] owner:nil];
  NSData* contents = ContentsOfFile(path);
  return contents != nil && [pasteboard setData:contents forType:type];
}

NSArray* TsStringsOfPasteboardType(NSPasteboard* pasteboard, NSString* type) {
  NSMutableArray* strings = [NSMutableArray array];
  for (NSPasteboardItem* item in [pasteboard pasteboardItems]) {
    for (NSString* offered in [item types]) {
      if (![offered isEqualToString:type]) continue;
      if (NSString* string = [item stringForType:offered]) [strings addObject:string];
    }
  }
  return strings;
}

NSString* TsGetFindStringFromPasteboard() { return [FindPasteboard() stringForType:NSStringPboardType]; }

void TsSetFindStringToPasteboard(NSString* string) {
  NSPasteboard* pasteboard = FindPasteboard();
  [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
  [pasteboard setString:string forType:NSStringPboardType];
}

@implementation NSPasteboard (TsURL)

- (void)ts_declareURLPasteboardWithAdditionalTypes:(NSArray*)types owner:(id)provider {
  NSMutableArray* all = [NSMutableArray arrayWithArray:types != nil ? types : @[]];
  [all addObjectsFromArray:@[
    kURLsWithTitlesType, NSURLPboardType, NSStringPboardType, kClassicURLType, kClassicTitleType
  ]];
  [self declareTypes:all owner:provider];
}

- (void)ts_setURL:(NSString*)url withTitle:(NSString*)title {
  [self ts_setURLs:@[ url ] withTitles:title != nil ? @[ title ] : nil];
}

- (void)ts_setURLs:(NSArray*)urls withTitles:(NSArray*)titles {
  NSArray* allTitles = TitlesOrNone(titles, urls);
  [self setPropertyList:@[ urls, allTitles ] forType:kURLsWithTitlesType];
  if ([urls count] == 0) return;
  if ([urls count] == 1) [[NSURL URLWithString:FirstOf(urls)] writeToPasteboard:self];
  [self setString:[urls componentsJoinedByString:@"\n"] forType:NSStringPboardType];
  [self setData:[FirstOf(urls) dataUsingEncoding:NSUTF8StringEncoding] forType:kClassicURLType];
  [self setData:[FirstOf(allTitles) dataUsingEncoding:NSUTF8StringEncoding] forType:kClassicTitleType];
}

@end
