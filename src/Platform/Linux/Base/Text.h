#pragma once

#import <Foundation/NSString.h>

#include <string>
#include <string_view>

#include "Base/Ref.h"

namespace tessaro::platform {

// Empty for what is no UTF-8.
[[nodiscard]] inline NSString* Text(std::string_view utf8) {
  auto text = Adopt([[NSString alloc] initWithBytes:utf8.data() length:utf8.size() encoding:NSUTF8StringEncoding]);
  return text ? text.Autoreleased() : @"";
}

// Empty for nil.
[[nodiscard]] inline std::string Utf8(NSString* text) {
  const char* utf8 = [text UTF8String];
  return utf8 != nullptr ? utf8 : "";
}

}  // namespace tessaro::platform
