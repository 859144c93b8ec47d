#pragma once

#import <Foundation/Foundation.h>

#include <cstddef>
#include <cstdint>

#include "Base/Ref.h"

// Foundation objects for values that cross the script boundary in large numbers. Where Foundation's own factories are
// slow (GNUstep: 300 to 2000 ns an object) they are objects of compact classes, which behave like Foundation's own.
// For .mm files. Any thread.
namespace tessaro::platform {

// A new string whose characters the caller writes, at once and completely, before anybody else sees it.
template <typename Character>
struct BlankString {
  Ref<NSString> string;
  Character* characters;
};

[[nodiscard]] BlankString<std::uint8_t> NewLatin1String(std::size_t length);
[[nodiscard]] BlankString<char16_t> NewUtf16String(std::size_t length);

// The characters of a string that keeps them in one piece; both pointers are null for any other string.
// They live as long as the string.
struct StringView {
  const std::uint8_t* latin1 = nullptr;
  const char16_t* utf16 = nullptr;
  std::size_t length = 0;
};

[[nodiscard]] StringView StringContents(NSString* string);

// The same string at +1, without the cost of a message where there is a shorter way.
[[nodiscard]] NSString* RetainedString(NSString* string);

[[nodiscard]] Ref<NSNumber> NewNumber(std::int64_t value);
[[nodiscard]] Ref<NSNumber> NewNumber(std::uint64_t value);
[[nodiscard]] Ref<NSNumber> NewNumber(double value);

// A dictionary of `count` keys, which are immutable, and their values. Takes over one reference to each of them. Of
// keys that come twice the last one counts.
[[nodiscard]] Ref<NSMutableDictionary> NewMutableDictionary(NSString* const ownedKeys[], id const ownedValues[],
                                                            std::size_t count);

}  // namespace tessaro::platform
