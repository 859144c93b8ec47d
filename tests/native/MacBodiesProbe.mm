#import <Foundation/Foundation.h>

#include "Platform/Common/PictureTarget.h"
#include "Platform/macOS/AppleScriptText.h"
#include "Platform/macOS/CarbonModifiers.h"
#include "Probe.h"

// Plain C++ of the macOS bodies.

namespace platform = tessaro::platform;

namespace {

std::string appleScriptText(std::string text) { return platform::AppleScriptText(text); }

unsigned carbonModifiers(id held) {
  platform::HotKey key;
  key.command = [held containsObject:@"command"];
  key.option = [held containsObject:@"option"];
  key.control = [held containsObject:@"control"];
  key.shift = [held containsObject:@"shift"];
  return platform::CarbonModifiersOf(key);
}

id sizeWithin(int width, int height, int mostWidth, int mostHeight) {
  const auto size = platform::SizeWithin({width, height}, mostWidth, mostHeight);
  return @[ @(size.width), @(size.height) ];
}

PROBES("macBodies", appleScriptText, carbonModifiers, sizeWithin);

}  // namespace
