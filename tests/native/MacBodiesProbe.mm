#import <Foundation/Foundation.h>

#include "Base/TsString.h"
#include "Platform/Common/AppleScriptText.h"
#include "Platform/Common/CarbonModifiers.h"
#include "Platform/Common/PictureTarget.h"
#include "Probe.h"

// What the macOS bodies compute in plain C++.

namespace platform = tessaro::platform;

namespace {

std::string Text(id dictionary, NSString* key) { return TsStdString([dictionary objectForKey:key]); }
int Number(id array, NSUInteger index) { return [[array objectAtIndex:index] intValue]; }

id informationWindowScript(id arguments) {
  return @[ TsNSString(platform::InformationWindowScript(TsStdString([arguments objectAtIndex:0]))) ];
}

id carbonModifiers(id held) {
  platform::HotKey key;
  key.command = [held containsObject:@"command"];
  key.option = [held containsObject:@"option"];
  key.control = [held containsObject:@"control"];
  key.shift = [held containsObject:@"shift"];
  return @[ [NSNumber numberWithUnsignedInt:platform::CarbonModifiersOf(key)] ];
}

id pictureTarget(id copy) {
  const auto target = platform::PictureTargetOf(Text(copy, @"source"), Text(copy, @"target"), Text(copy, @"format"),
                                                [[copy objectForKey:@"photo"] boolValue]);
  return @[ TsNSString(target.path.native()), TsNSString(target.format->name) ];
}

id sizeWithin(id lengths) {
  const auto size =
      platform::SizeWithin({Number(lengths, 0), Number(lengths, 1)}, Number(lengths, 2), Number(lengths, 3));
  return @[ [NSNumber numberWithInt:size.width], [NSNumber numberWithInt:size.height] ];
}

}  // namespace

void AttachMacBodiesProbe(v8::Local<v8::Object> exports) {
  JSON_PROBE(informationWindowScript);
  JSON_PROBE(carbonModifiers);
  JSON_PROBE(pictureTarget);
  JSON_PROBE(sizeWithin);
}
