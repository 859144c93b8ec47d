#pragma once

#import <Foundation/NSString.h>

#include <string>
#include <string_view>

// The text as UTF-8, NUL characters included; empty for nil. Lone surrogates become U+FFFD.
[[nodiscard]] std::string TsStdString(NSString* string);

// Autoreleased string of UTF-8 text from outside, whatever its bytes: malformed sequences become U+FFFD.
[[nodiscard]] NSString* TsNSString(std::string_view utf8);
