#import "Extensions/NSPasteboard+TsURL.h"

#include "Platform/Cocoa.h"

static NSString* const kURLsWithTitlesType = @"WebURLsWithTitlesPboardType";
// The types 'url ' and 'urln' of the classic Mac OS.
static NSString* const kClassicURLType = @"CorePasteboardFlavorType 0x75726C20";
static NSString* const kClassicTitleType = @"CorePasteboardFlavorType 0x75726C6E";

static NSArray* TitlesOrNone(NSArray* titles, NSArray* urls) {
  if (titles != nil) return titles;
  NSMutableArray* none = [NSMutableArray array];
  for (NSUInteger i = 0; i < [urls count]; ++i) [none addObject:@""];
  return none;
}

static NSString* FirstOf(NSArray* texts) { return [texts count] > 0 ? [texts objectAtIndex:0] : @""; }

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
