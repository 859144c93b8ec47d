#pragma once

#import <Foundation/NSString.h>
#import <objc/runtime.h>

#include "Platform/FoundationValues.h"
#include "Platform/Linux/AppKit/CompactObject.h"

// An immutable string with its characters behind the object, as Latin-1 or UTF-16. Made by NewLatin1String() and
// NewUtf16String() only. The instance variables are public for the functions below.
@interface TsCompactString : NSString {
 @public
  std::uint32_t _extraReferences;
  std::uint32_t _isWide;
  NSUInteger _length;
  NSUInteger _hash;  // 0 until it is asked for
}
@end

namespace tessaro::platform {

// What a message would do, for the places where looking the method up costs more than the work.

// The class, known from the moment that it is loaded.
extern Class compactStringClass;

[[nodiscard]] inline bool IsCompactString(id object) {
  return object != nil && object_getClass(object) == compactStringClass;
}

template <typename Character>
[[nodiscard]] Character* CharactersOf(TsCompactString* string) {
  return reinterpret_cast<Character*>(reinterpret_cast<char*>(string) + sizeof(TsCompactString));
}

inline void FreeString(TsCompactString* string) {
  const std::size_t width = string->_isWide ? sizeof(char16_t) : sizeof(std::uint8_t);
  FreeCompactMemory(string, sizeof(TsCompactString) + string->_length * width);
}

inline void RetainObject(id object) {
  if (IsCompactString(object)) {
    AddReference(static_cast<TsCompactString*>(object)->_extraReferences);
  } else {
    [object retain];
  }
}

inline void ReleaseObject(id object) {
  if (!IsCompactString(object)) return [object release];
  auto* string = static_cast<TsCompactString*>(object);
  if (RemoveReference(string->_extraReferences)) FreeString(string);
}

}  // namespace tessaro::platform
