#pragma once

#import <Foundation/NSString.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Ref.h"

@class NSArray;

// The text as UTF-8, NUL characters included; empty for nil. Lone surrogates become U+FFFD.
[[nodiscard]] std::string TsStdString(NSString* string);

// The text's UTF-16 units as they are; empty for nil.
[[nodiscard]] std::u16string TsCharacters(NSString* string);

// The bytes of a string that Foundation keeps in Latin-1, as it does with most; none of any other string.
[[nodiscard]] std::optional<std::string> TsLatin1(NSString* string);

// A string of UTF-8 text from outside, whatever its bytes: malformed sequences become U+FFFD.
[[nodiscard]] Ref<NSString> TsNewString(std::string_view utf8);

// The same for UTF-16: lone surrogates become U+FFFD.
[[nodiscard]] Ref<NSString> TsNewString(std::u16string utf16);

// The same, autoreleased.
[[nodiscard]] NSString* TsNSString(std::string_view utf8);
[[nodiscard]] NSArray* TsNSArray(const std::vector<std::string>& texts);

// A missing text would be formatted as "(null)", and can't stand in a collection.
[[nodiscard]] inline NSString* TsOrEmpty(NSString* text) { return text != nil ? text : @""; }
