#include "PasteboardProbe.h"
#include "Base/Lifetime.h"
#include "Base/Ref.h"
#import "Extensions/NSPasteboard+TsURL.h"
#include "Pasteboard/TsPasteboard.h"
#include "Platform/Cocoa.h"
#include "Probe.h"

namespace {

NSPasteboard* General() { return [NSPasteboard generalPasteboard]; }

NSString* TextFor(NSString* type) {
  NSData* data = [General() dataForType:type];
  return data == nil ? nil : Adopt([[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding]).Autoreleased();
}

}  // namespace

// Provides what it is asked for, and counts how often.
@interface TsProbeProvider : NSObject {
  int _times;
}
- (int)times;
@end

@implementation TsProbeProvider

- (void)pasteboard:(NSPasteboard*)pasteboard provideDataForType:(NSString*)type {
  ++_times;
  [pasteboard setString:[@"of " stringByAppendingString:type] forType:type];
}

- (int)times {
  return _times;
}

@end

static TsProbeProvider* Provider() {
  static Forever<Ref<TsProbeProvider>> provider(Adopt([[TsProbeProvider alloc] init]));
  return provider->get();
}

id offerLazily(id) {
  [General() declareTypes:@[ @"public.png", @"public.html" ] owner:Provider()];
  return @[];
}

id timesProvided(id) { return @[ @([Provider() times]) ]; }

id typesOnPasteboard(id) {
  NSMutableArray* types = [NSMutableArray array];
  NSArray* remote = [General() types];
  for (NSUInteger i = 0; i < [remote count]; ++i) [types addObject:[remote objectAtIndex:i]];
  return types;
}

void PutTypesOnPasteboard(NSDictionary* types) {
  [General() declareTypes:[[types allKeys] sortedArrayUsingSelector:@selector(compare:)] owner:nil];
  for (NSString* type in types) {
    auto data = Adopt([[NSData alloc] initWithBase64EncodedString:[types objectForKey:type] options:0]);
    [General() setData:data forType:type];
  }
}

id pasteboardTypes(id) {
  NSMutableArray* types = [NSMutableArray array];
  NSArray* remote = [General() types];
  for (NSUInteger i = 0; i < [remote count]; ++i) {
    NSString* type = [remote objectAtIndex:i];
    [types addObject:@[ type, OrNull([[General() dataForType:type] base64EncodedStringWithOptions:0]) ]];
  }
  return types;
}

id largeValueSurvives(id description) {
  auto data = Adopt([[NSMutableData alloc] initWithLength:[[description objectForKey:@"bytes"] unsignedIntegerValue]]);
  auto* bytes = static_cast<unsigned char*>([data mutableBytes]);
  for (NSUInteger i = 0; i < [data length]; ++i) bytes[i] = static_cast<unsigned char>(i * 31 >> 3);
  [General() declareTypes:@[ @"org.tessaro.large" ] owner:nil];
  [General() setData:data forType:@"org.tessaro.large"];
  const bool isSaved = TsSavePasteboard(General());
  [General() clearContents];
  const bool isRestored = TsRestorePasteboard(General());
  const bool isSame = [[General() dataForType:@"org.tessaro.large"] isEqualToData:data];
  return @[ [NSNumber numberWithBool:isSaved && isRestored && isSame] ];
}

id putURLs(id lists) {
  id titles = [lists objectAtIndex:1];
  [General() ts_declareURLPasteboardWithAdditionalTypes:@[ @"org.tessaro.more" ] owner:nil];
  [General() ts_setURLs:[lists objectAtIndex:0] withTitles:titles == [NSNull null] ? nil : titles];
  const bool hasURL = [NSURL URLFromPasteboard:General()] != nil;
  return @[
    OrNull([General() propertyListForType:@"WebURLsWithTitlesPboardType"]),
    OrNull([General() stringForType:NSStringPboardType]), OrNull(TextFor(@"CorePasteboardFlavorType 0x75726C20")),
    OrNull(TextFor(@"CorePasteboardFlavorType 0x75726C6E")), [NSNumber numberWithBool:hasURL]
  ];
}
