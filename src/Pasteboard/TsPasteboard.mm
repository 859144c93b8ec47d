#include "Pasteboard/TsPasteboard.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Platform/Cocoa.h"

namespace {

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

// Reading a pipe or a device could block.
NSData* ContentsOfFile(NSString* path) {
  NSString* file = [path stringByResolvingSymlinksInPath];
  NSDictionary* attributes = [[NSFileManager defaultManager] attributesOfItemAtPath:file error:nullptr];
  return [[attributes fileType] isEqualToString:NSFileTypeRegular] ? [NSData dataWithContentsOfFile:file] : nil;
}

NSPasteboard* FindPasteboard() { return [NSPasteboard pasteboardWithName:NSFindPboard]; }

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
