#import "AppleScript/TsASOutgoingMessage.h"
#include "Base/TsString.h"
#include "Platform/Services.h"
#include "Probe.h"
#include "Services/TsServicesProvider.h"

namespace {

// Lets the provider work on a pasteboard that has a text, a list, or nothing. Gives the error, and what the pasteboard
// has then.
id serve(NSString* method, NSString* type, id value) {
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  if (value != nil) [pasteboard declareTypes:@[ type ] owner:nil];
  if (NSString* text = As<NSString>(value)) {
    [pasteboard setString:text forType:type];
  } else if (value != nil) {
    [pasteboard setPropertyList:value forType:type];
  }
  const auto provider = Adopt([[TsServicesProvider alloc] init]);
  NSString* error = nil;
  using Serve = void (*)(id, SEL, NSPasteboard*, NSString*, NSString**);
  const SEL selector = NSSelectorFromString([method stringByAppendingString:@":userData:error:"]);
  reinterpret_cast<Serve>([provider methodForSelector:selector])(provider, selector, pasteboard, nil, &error);
  return @[
    TsSanitizeValue(error), TsSanitizeValue([pasteboard stringForType:NSStringPboardType]),
    [NSArray arrayWithArray:[pasteboard types]]
  ];
}

// Uses another application's service, as its Services menu would. Gives the reason of a failure.
std::string performWithFiles(std::string service, NSArray* paths) {
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
  [pasteboard setPropertyList:paths forType:NSFilenamesPboardType];
  const auto performed = tessaro::platform::PerformService(service, TsStdString([pasteboard name]));
  return performed ? "" : performed.error().message;
}

PROBES("composition", serve, performWithFiles);

}  // namespace
