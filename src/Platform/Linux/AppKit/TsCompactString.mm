#import "Platform/Linux/AppKit/TsCompactString.h"

#include <algorithm>

using tessaro::platform::CharactersOf;
using tessaro::platform::IsCompactString;
using tessaro::platform::StringContents;

namespace {

// `out` may have any alignment: Foundation's archives write in the middle of their bytes.
void Widen(const std::uint8_t* characters, std::size_t length, unichar* out) {
  auto* next = reinterpret_cast<char*>(out);
  for (std::size_t i = 0; i < length; ++i, next += sizeof(unichar)) {
    const unichar wide = characters[i];
    std::memcpy(next, &wide, sizeof wide);
  }
}

void CheckRange(NSRange range, NSUInteger length) {
  if (range.location > length || range.length > length - range.location) {
    [NSException
         raise:NSRangeException
        format:@"Range {%lu, %lu} is outside a string of %lu characters", static_cast<unsigned long>(range.location),
               static_cast<unsigned long>(range.length), static_cast<unsigned long>(length)];
  }
}

}  // namespace

Class tessaro::platform::compactStringClass = nil;

@implementation TsCompactString

+ (void)load {
  tessaro::platform::compactStringClass = self;
}

// The class makes no objects itself: `[[string class] alloc]` must give what any other string's class gives.
+ (id)allocWithZone:(NSZone*)zone {
  return static_cast<id>([NSString allocWithZone:zone]);
}

TS_COMPACT_REFERENCE_COUNTING(tessaro::platform::FreeString)

- (NSUInteger)length {
  return _length;
}

- (unichar)characterAtIndex:(NSUInteger)index {
  CheckRange(NSMakeRange(index, 1), _length);
  return _isWide ? CharactersOf<char16_t>(self)[index] : CharactersOf<std::uint8_t>(self)[index];
}

- (void)getCharacters:(unichar*)characters {
  [self getCharacters:characters range:NSMakeRange(0, _length)];
}

- (void)getCharacters:(unichar*)characters range:(NSRange)range {
  CheckRange(range, _length);
  if (_isWide) {
    std::memcpy(characters, CharactersOf<char16_t>(self) + range.location, range.length * sizeof(unichar));
  } else {
    Widen(CharactersOf<std::uint8_t>(self) + range.location, range.length, characters);
  }
}

// Every string class must give the same hash for the same text: only NSString itself knows how.
- (NSUInteger)hash {
  if (_hash == 0) _hash = [super hash];
  return _hash;
}

- (BOOL)isEqual:(id)other {
  if (other == self) return YES;
  return IsCompactString(other) ? [self isEqualToString:other] : [super isEqual:other];
}

- (BOOL)isEqualToString:(NSString*)other {
  if (!IsCompactString(other)) return [super isEqualToString:other];
  const auto mine = StringContents(self);
  const auto theirs = StringContents(other);
  if (mine.length != theirs.length) return NO;
  if (mine.latin1 != nullptr && theirs.latin1 != nullptr) {
    return std::equal(mine.latin1, mine.latin1 + mine.length, theirs.latin1);
  }
  if (mine.utf16 != nullptr && theirs.utf16 != nullptr) {
    return std::equal(mine.utf16, mine.utf16 + mine.length, theirs.utf16);
  }
  return [super isEqualToString:other];
}

- (id)copyWithZone:(NSZone*)zone {
  return [self retain];
}

@end

namespace tessaro::platform {

namespace {

template <typename Character>
BlankString<Character> NewString(std::size_t length, bool isWide) {
  auto* string = AllocateCompactObject<TsCompactString>(compactStringClass, length * sizeof(Character));
  string->_length = length;
  string->_isWide = isWide;
  return {Adopt<NSString>(string), CharactersOf<Character>(string)};
}

}  // namespace

BlankString<std::uint8_t> NewLatin1String(std::size_t length) { return NewString<std::uint8_t>(length, false); }

BlankString<char16_t> NewUtf16String(std::size_t length) { return NewString<char16_t>(length, true); }

NSString* RetainedString(NSString* string) {
  RetainObject(string);
  return string;
}

StringView StringContents(NSString* string) {
  if (!IsCompactString(string)) return {};
  auto* compact = static_cast<TsCompactString*>(string);
  if (compact->_isWide) return {.utf16 = CharactersOf<char16_t>(compact), .length = compact->_length};
  return {.latin1 = CharactersOf<std::uint8_t>(compact), .length = compact->_length};
}

}  // namespace tessaro::platform
