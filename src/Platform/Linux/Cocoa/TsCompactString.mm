#import "Platform/Linux/Cocoa/TsCompactString.h"

#import <objc/runtime.h>

#include <algorithm>

#include "Platform/Linux/Cocoa/CompactObject.h"

namespace platform = tessaro::platform;

namespace {

Class CompactString() {
  static const Class type = [TsCompactString class];
  return type;
}

std::size_t InstanceSize() {
  static const std::size_t size = class_getInstanceSize(CompactString());
  return size;
}

template <typename Character>
Character* CharactersOf(id string) {
  return reinterpret_cast<Character*>(reinterpret_cast<char*>(string) + InstanceSize());
}

void CheckRange(NSRange range, NSUInteger length) {
  if (range.location > length || range.length > length - range.location) {
    [NSException raise:NSRangeException
                format:@"Range {%lu, %lu} is outside a string of %lu characters",
                       static_cast<unsigned long>(range.location), static_cast<unsigned long>(range.length),
                       static_cast<unsigned long>(length)];
  }
}

}  // namespace

@interface TsCompactString ()
- (void)setLength:(NSUInteger)length isWide:(BOOL)isWide;
@end

@implementation TsCompactString

// The class makes no objects itself: `[[string class] alloc]` must give what any other string's class gives.
+ (id)allocWithZone:(NSZone*)zone {
  return static_cast<id>([NSString allocWithZone:zone]);
}

TS_COMPACT_REFERENCE_COUNTING

// Not of Foundation's allocation, so Foundation must not free it.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wobjc-missing-super-calls"
- (void)dealloc {
  std::free(self);
}
#pragma clang diagnostic pop

- (void)setLength:(NSUInteger)length isWide:(BOOL)isWide {
  _length = length;
  _isWide = isWide;
}

- (platform::StringView)contents {
  if (_isWide) return {.utf16 = CharactersOf<char16_t>(self), .length = _length};
  return {.latin1 = CharactersOf<std::uint8_t>(self), .length = _length};
}

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
    std::copy_n(CharactersOf<char16_t>(self) + range.location, range.length, characters);
  } else {
    std::copy_n(CharactersOf<std::uint8_t>(self) + range.location, range.length, characters);
  }
}

// Every string class must give the same hash for the same text: only NSString itself knows how.
- (NSUInteger)hash {
  if (_hash == 0) _hash = [super hash];
  return _hash;
}

- (BOOL)isEqual:(id)other {
  if (other == self) return YES;
  return object_getClass(other) == CompactString() ? [self isEqualToString:other] : [super isEqual:other];
}

- (BOOL)isEqualToString:(NSString*)other {
  if (object_getClass(other) != CompactString()) return [super isEqualToString:other];
  const auto mine = [self contents];
  const auto theirs = [static_cast<TsCompactString*>(other) contents];
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
BlankString<Character> NewString(std::size_t length, BOOL isWide) {
  TsCompactString* string = AllocateCompactObject(CompactString(), InstanceSize(), length * sizeof(Character));
  [string setLength:length isWide:isWide];
  return {Adopt<NSString>(string), CharactersOf<Character>(string)};
}

}  // namespace

BlankString<std::uint8_t> NewLatin1String(std::size_t length) { return NewString<std::uint8_t>(length, NO); }

BlankString<char16_t> NewUtf16String(std::size_t length) { return NewString<char16_t>(length, YES); }

StringView StringContents(NSString* string) {
  if (object_getClass(string) != CompactString()) return {};
  return [static_cast<TsCompactString*>(string) contents];
}

}  // namespace tessaro::platform
