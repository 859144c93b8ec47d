#pragma once

#import <Foundation/NSString.h>

#include <string>
#include <string_view>

#include "Base/Ref.h"

// The text as UTF-8, NUL characters included; empty for nil. Lone surrogates become U+FFFD.
[[nodiscard]] std::string TsStdString(NSString* string);

// A string of UTF-8 text from outside, whatever its bytes: malformed sequences become U+FFFD.
[[nodiscard]] Ref<NSString> TsNewString(std::string_view utf8);

// The same, autoreleased.
[[nodiscard]] NSString* TsNSString(std::string_view utf8);
