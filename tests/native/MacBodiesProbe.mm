#import <Foundation/Foundation.h>

#include "Base/TsString.h"
#include "Platform/Common/PictureTarget.h"
#include "Platform/macOS/AppleScriptText.h"
#include "Platform/macOS/CarbonModifiers.h"
#include "Probe.h"

// Plain C++ of the macOS bodies.

namespace platform = tessaro::platform;

namespace {

std::string Text(id dictionary, NSString* key) { return TsStdString([dictionary objectForKey:key]); }

id informationWindowScript(NSString* path) { return TsNSString(platform::InformationWindowScript(TsStdString(path))); }

unsigned carbonModifiers(id held) {
  platform::HotKey key;
  key.command = [held containsObject:@"command"];
  key.option = [held containsObject:@"option"];
  key.control = [held containsObject:@"control"];
  key.shift = [held containsObject:@"shift"];
  return platform::CarbonModifiersOf(key);
}

id pictureTarget(id copy) {
  const auto target = platform::PictureTargetOf(Text(copy, @"source"), Text(copy, @"target"), Text(copy, @"format"),
                                                [[copy objectForKey:@"photo"] boolValue], platform::WebP::ReadOnly);
  return @[ TsNSString(target.path.native()), TsNSString(target.format->name) ];
}

id sizeWithin(int width, int height, int mostWidth, int mostHeight) {
  const auto size = platform::SizeWithin({width, height}, mostWidth, mostHeight);
  return @[ @(size.width), @(size.height) ];
}

PROBES("macBodies", informationWindowScript, carbonModifiers, pictureTarget, sizeWithin);

}  // namespace
