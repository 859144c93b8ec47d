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

namespace {

TsProbeProvider* Provider() {
  static Forever<Ref<TsProbeProvider>> provider(Adopt([[TsProbeProvider alloc] init]));
  return provider->get();
}

// A picture and HTML that are provided on request, and the number of requests.
void offerLazily() { [General() declareTypes:@[ @"public.png", @"public.html" ] owner:Provider()]; }
int timesProvided() { return [Provider() times]; }

// A text, files, or data as Base64 by type.
void put(NSDictionary* content) {
  if (NSDictionary* types = [content objectForKey:@"types"]) {
    [General() declareTypes:[[types allKeys] sortedArrayUsingSelector:@selector(compare:)] owner:nil];
    for (NSString* type in types) {
      auto data = Adopt([[NSData alloc] initWithBase64EncodedString:[types objectForKey:type] options:0]);
      [General() setData:data forType:type];
    }
  } else if (id files = [content objectForKey:@"files"]) {
    [General() declareTypes:@[ NSFilenamesPboardType ] owner:nil];
    [General() setPropertyList:files forType:NSFilenamesPboardType];
  } else {
    [General() declareTypes:@[ NSStringPboardType ] owner:nil];
    [General() setString:[content objectForKey:@"text"] forType:NSStringPboardType];
  }
}

id types() {
  NSMutableArray* types = [NSMutableArray array];
  NSArray* remote = [General() types];
  for (NSUInteger i = 0; i < [remote count]; ++i) [types addObject:[remote objectAtIndex:i]];
  return types;
}

// [type, Base64] of each.
id data() {
  NSMutableArray* all = [NSMutableArray array];
  for (NSString* type in types()) {
    [all addObject:@[ type, OrNull([[General() dataForType:type] base64EncodedStringWithOptions:0]) ]];
  }
  return all;
}

bool largeValueSurvives(std::uint32_t length) {
  auto data = Adopt([[NSMutableData alloc] initWithLength:length]);
  auto* bytes = static_cast<unsigned char*>([data mutableBytes]);
  for (NSUInteger i = 0; i < length; ++i) bytes[i] = static_cast<unsigned char>(i * 31 >> 3);
  [General() declareTypes:@[ @"org.tessaro.large" ] owner:nil];
  [General() setData:data forType:@"org.tessaro.large"];
  const bool isSaved = TsSavePasteboard(General());
  [General() clearContents];
  const bool isRestored = TsRestorePasteboard(General());
  return isSaved && isRestored && [[General() dataForType:@"org.tessaro.large"] isEqualToData:data];
}

// Writes addresses and their titles, and returns the pasteboard's contents.
id putURLs(NSArray* urls, NSArray* titles) {
  [General() ts_declareURLPasteboardWithAdditionalTypes:@[ @"org.tessaro.more" ] owner:nil];
  [General() ts_setURLs:urls withTitles:titles];
  return @[
    OrNull([General() propertyListForType:@"WebURLsWithTitlesPboardType"]),
    OrNull([General() stringForType:NSStringPboardType]), OrNull(TextFor(@"CorePasteboardFlavorType 0x75726C20")),
    OrNull(TextFor(@"CorePasteboardFlavorType 0x75726C6E")), Truth([NSURL URLFromPasteboard:General()] != nil)
  ];
}

}  // namespace

void AttachPasteboardProbe(v8::Local<v8::Object> exports) {
  PROBE(put);
  PROBE(types);
  PROBE(data);
  PROBE(offerLazily);
  PROBE(timesProvided);
  PROBE(largeValueSurvives);
  PROBE(putURLs);
}
