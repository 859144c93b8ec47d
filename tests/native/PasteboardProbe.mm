#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Cocoa.h"
#include "Platform/Linux/Clipboard/Selections.h"
#include "Probe.h"

namespace {

NSPasteboard* General() { return [NSPasteboard generalPasteboard]; }

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

// The length of the clipboard's text when it is read with this limit; -1 when reading fails.
double lengthWithin(double most) {
  using namespace tessaro::platform;
  const auto text = Selections::Shared().Read("CLIPBOARD", "UTF8_STRING", {.bytes = static_cast<std::size_t>(most)});
  return text ? static_cast<double>(text->size()) : -1;
}

PROBES("pasteboard", put, types, data, offerLazily, timesProvided, lengthWithin);

}  // namespace
